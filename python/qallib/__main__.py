"""python3 -m qallib: the qal command-line tool."""

import sys

from .cli import main

sys.exit(main())
