// A program outside the project that uses the installed package.
#include <cstring>

#include <qal/qal.h>
#include <qal/qal_classes.h>
#include <qal/qal_curves.h>
#include <qal/version.h>

namespace {

// An index-tested vector and the exception it raises, across the library boundary.
bool containersWork() {
    t_QalVector<double> v(3);
    v(0) = 1.0;
    v(1) = 2.0;
    v(2) = 6.0;
    double mean = 0.0;
    if (!k_Qal::Mean(v, mean) || mean != 3.0) return false;
    try {
        v(3) = 1.0;
    } catch (const k_QalExceptionIndex& e) {
        return e.m_index == 3 && e.GetMessageW() == L"Internal error: bad index 3";
    }
    return false;
}

}  // namespace

int main() {
    InitQalLibExtDLL();
    const double x[] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    const double y[] = {84, 91, 96, 99, 100, 99, 96, 91, 84};
    double xOut = 0.0, yOut = 0.0;
    int kind = 0;
    const int status = QAL_GetExtremum(x, y, 9, &xOut, &yOut, &kind, 0, 5.0f);
    const bool extremumFound = status == QAL_OK && kind == QAL_EXTREMUM_MAX && xOut == 4.0 && yOut == 100.0;
    // A result vector handed across the library boundary: the same peak, at sample 4.
    const std::vector<qal::Extremum> hits = qal::findExtrema(x, y, 9, 6, 5.0f);
    const bool helperFound = hits.size() == 1 && hits[0].index == 4 && hits[0].kind == QAL_EXTREMUM_MAX;
    // The installed header and the linked library tell the same version.
    const bool sameVersion = std::strcmp(qal_version(), QAL_VERSION_STRING) == 0;
    return extremumFound && helperFound && containersWork() && sameVersion ? 0 : 1;
}
