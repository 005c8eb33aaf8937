// A caller's function for the routines that take a plain function pointer (no context): it
// records every abscissa it is called with, in call order, on this thread, and answers with F.
#ifndef QAL_TESTS_SUPPORT_RECORDED_CALLS_H
#define QAL_TESTS_SUPPORT_RECORDED_CALLS_H

#include <vector>

namespace qal::test {

inline std::vector<double>& RecordedCalls() {
    thread_local std::vector<double> calls;
    return calls;
}

template <double (*F)(double)>
double Recorded(double x) {
    RecordedCalls().push_back(x);
    return F(x);
}

}  // namespace qal::test

#endif  // QAL_TESTS_SUPPORT_RECORDED_CALLS_H
