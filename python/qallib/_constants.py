"""The named values of qal.h as IntEnums, and as module constants without the QAL_ prefix
(qallib.EXTREMUM_MAX is ExtremumKind.MAX, qallib.ERR_NOT_FOUND is Status.ERR_NOT_FOUND).
The values come from the compiled library, so they cannot drift from the C++ header."""

from enum import IntEnum

from ._qal import constants as _c


def _members(prefix):
    return {name[len(prefix):]: value for name, value in _c.items() if name.startswith(prefix)}


#: The status codes (QAL_OK, QAL_ERR_*); every one but OK raises a QalError subclass.
Status = IntEnum("Status", {name[len("QAL_"):]: value for name, value in _c.items()
                            if name == "QAL_OK" or name.startswith("QAL_ERR_")})
#: Kinds of an extremum (QAL_EXTREMUM_*); not status codes.
ExtremumKind = IntEnum("ExtremumKind", _members("QAL_EXTREMUM_"))
#: Options of interpol and interpol_float_arrays (QAL_INTERPOL_*).
InterpolOption = IntEnum("InterpolOption", _members("QAL_INTERPOL_"))
#: Filter kinds of filter_array and set_filter_coefficients (QAL_FILTER_*).
FilterKind = IntEnum("FilterKind", _members("QAL_FILTER_"))
#: Methods of deriv_array (QAL_DERIV_*).
DerivMethod = IntEnum("DerivMethod", _members("QAL_DERIV_"))

for _enum in (Status, ExtremumKind, InterpolOption, FilterKind, DerivMethod):
    _enum.__module__ = "qallib"

_prefixes = {ExtremumKind: "EXTREMUM_", InterpolOption: "INTERPOL_", FilterKind: "FILTER_", DerivMethod: "DERIV_"}
_module_constants = {member.name: member for member in Status}
for _enum, _prefix in _prefixes.items():
    _module_constants.update({_prefix + member.name: member for member in _enum})
globals().update(_module_constants)

__all__ = ["Status", "ExtremumKind", "InterpolOption", "FilterKind", "DerivMethod"] + sorted(_module_constants)
