// A program outside the project that uses the installed package.
#include <qal/qal.h>

int main() {
    InitQalLibExtDLL();
    const double x[] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    const double y[] = {84, 91, 96, 99, 100, 99, 96, 91, 84};
    double xOut = 0.0, yOut = 0.0;
    int kind = 0;
    const int status = QAL_GetExtremum(x, y, 9, &xOut, &yOut, &kind, 0, 5.0f);
    return status == QAL_OK && kind == QAL_EXTREMUM_MAX && xOut == 4.0 && yOut == 100.0 ? 0 : 1;
}
