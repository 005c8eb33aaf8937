// Window sizes of the extremum drivers, shared with the tests.
#ifndef QAL_SRC_CURVES_EXTREMUM_WINDOWS_H
#define QAL_SRC_CURVES_EXTREMUM_WINDOWS_H

namespace qal::detail {

// Window size from the caller's request: n/2 for a request above n, else its magnitude;
// then down to a multiple of 3, and 3 at least. May exceed n for a negative request.
int extremumWindowSize(int window, int n) noexcept;

struct AutoWindowSizes {
    int coarse;
    int fine;
};
// Coarse and fine window sizes from n alone.
AutoWindowSizes autoExtremumWindowSizes(int n) noexcept;

}  // namespace qal::detail

#endif  // QAL_SRC_CURVES_EXTREMUM_WINDOWS_H
