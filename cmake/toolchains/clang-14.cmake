# Debian's clang 14 on the host. Its default is to fuse a*b+c where the target has FMA;
# the project's -ffp-contract=off keeps every product and sum rounded on its own.
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
