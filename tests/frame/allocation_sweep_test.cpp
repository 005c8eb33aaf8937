// Every exported function under failing memory. One table holds each function that allocates,
// with a call on ordinary data that reaches its allocations; the sweep makes its 1st, 2nd, ...
// allocation fail in turn until the call succeeds, and each failing run must give the told
// status and outputs and leave nothing allocated. A census calls every exported function once
// (the names read from the public headers) and fails for a function that allocates but is not
// in the table, or that is in no table at all.
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "frame/allocator.h"
#include "qal/qal.h"
#include "qal/qal_classes.h"
#include "smoothing/golay_kernel.h"
#include "support/same_bits.h"

namespace qal::test {
namespace {

namespace alloc = qal::detail::testing;
using V = std::vector<double>;
using F = std::vector<float>;

// What one run gave: its status (a value result mapped to one), and whether its outputs hold
// what the failure of an allocation leaves there.
struct Outcome {
    int status;
    bool failureOutputs;
};

struct Allocating {
    const char* name;
    Outcome (*run)();
    int failStatus;
};

const V kX{0, 0.5, 1.25, 2, 3.5, 4, 5.5, 6, 7.25, 8, 9.5, 10}, kY{1, 3, 2, 5, 4, 6, 5, 8, 7, 9, 8, 10};
const int kN = 12;
double Cube(double x) { return x * x * x; }

bool AllUntouched(const V& v) {
    for (double d : v) {
        if (!SameBits(kUntouched, d)) return false;
    }
    return true;
}
bool AllUntouched(const F& v) {
    for (float f : v) {
        if (!SameBits(static_cast<float>(kUntouched), f)) return false;
    }
    return true;
}

const Allocating kAllocating[] = {
    {"QAL_NewMatrix",
     [] {
         double** m = QAL_NewMatrix(3, 4);
         QAL_DeleteMatrix(m, 3, 4);
         return Outcome{m ? QAL_OK : QAL_ERR_MEMORY, m == nullptr};
     },
     QAL_ERR_MEMORY},
    {"QAL_F2D",
     [] {
         const F source{1, 2, 3};
         double* target = reinterpret_cast<double*>(&target);
         const int status = QAL_F2D(source.data(), 3, &target);
         F back(3);
         if (status == QAL_OK) QAL_D2F(back.data(), 3, &target);
         return Outcome{status, target == nullptr};
     },
     QAL_ERR_MEMORY},
    {"QAL_CalcLog",
     [] {
         const F source{1, 10, 100};
         float* target = reinterpret_cast<float*>(&target);
         const int status = QAL_CalcLog(&target, source.data(), 3, 2);
         const bool failed = target == nullptr;
         if (status == QAL_OK) QAL_ReleaseArray(target);
         return Outcome{status, failed};
     },
     QAL_ERR_MEMORY},
    {"QAL_LUDecomposition",
     [] {
         V block{4, 1, 2, 3};
         double* rows[] = {block.data(), block.data() + 2};
         int pivots[] = {-1, -1};
         double sign = kUntouched;
         const int status = QAL_LUDecomposition(rows, 2, pivots, &sign);
         return Outcome{status, block == V{4, 1, 2, 3} && pivots[0] == -1 && SameBits(kUntouched, sign)};
     },
     QAL_ERR_MEMORY},
    {"QAL_Splines",
     [] {
         V y2(kN, kUntouched);
         return Outcome{QAL_Splines(kX.data(), kY.data(), kN, 1e25, 0.5, y2.data()), AllUntouched(y2)};
     },
     QAL_ERR_MEMORY},
    {"QAL_Interpol",  // the natural table of option 4, built for the call
     [] {
         double y = kUntouched;
         const int status = QAL_Interpol(&y, 4.5, kX.data(), kY.data(), nullptr, kN, QAL_INTERPOL_SPLINE);
         return Outcome{status, SameBits((kY[kN - 1] + kY[0]) * 0.5, y)};
     },
     QAL_ERR_MEMORY},
    {"QAL_InterpolFloatArrays",  // the four arrays, then the table that every point needs
     [] {
         const F x(kX.begin(), kX.end()), y(kY.begin(), kY.end()), xNew{0.75, 3, 9};
         F yNew(3, static_cast<float>(kUntouched));
         const int status = QAL_InterpolFloatArrays(x.data(), y.data(), kN, xNew.data(), yNew.data(), 3,
                                                    QAL_INTERPOL_SPLINE);
         return Outcome{status, AllUntouched(yNew)};
     },
     QAL_ERR_MEMORY},
    {"QAL_PolynomialInterpolation",
     [] {
         V out(2, kUntouched);
         return Outcome{QAL_PolynomialInterpolation(kX.data(), kY.data(), 5, 2.2, &out[0], &out[1]), AllUntouched(out)};
     },
     QAL_ERR_MEMORY},
    {"QAL_RationialInterpolation",
     [] {
         V out(2, kUntouched);
         return Outcome{QAL_RationialInterpolation(kX.data(), kY.data(), 5, 2.2, &out[0], &out[1]), AllUntouched(out)};
     },
     QAL_ERR_MEMORY},
    {"QAL_AkimaSub",
     [] {
         const F x(kX.begin(), kX.end()), y(kY.begin(), kY.end());
         F slopes(kN, static_cast<float>(kUntouched));
         return Outcome{QAL_AkimaSub(x.data(), y.data(), slopes.data(), kN), AllUntouched(slopes)};
     },
     QAL_ERR_MEMORY},
    {"QAL_SavitzkyGolayCoeffizient",
     [] {
         V coef(7, kUntouched);
         return Outcome{QAL_SavitzkyGolayCoeffizient(coef.data(), 7, 3, 3, 0, 4), AllUntouched(coef)};
     },
     QAL_ERR_MEMORY},
    {"QAL_SetFilterCoefficients",  // the Savitzky-Golay kind builds its weights with work memory
     [] {
         V coef(7, kUntouched);
         return Outcome{QAL_SetFilterCoefficients(coef.data(), QAL_FILTER_SAVITZKY_GOLAY, 7, 2), AllUntouched(coef)};
     },
     QAL_ERR_MEMORY},
    {"QAL_FilterArray",
     [] {
         V out(kN, kUntouched);
         return Outcome{QAL_FilterArray(kY.data(), out.data(), kN, 0, kN - 1, QAL_FILTER_SAVITZKY_GOLAY, 5, 2),
                        AllUntouched(out)};
     },
     QAL_ERR_MEMORY},
    {"QAL_FilterFloatArray",
     [] {
         const F in(kY.begin(), kY.end());
         F out(kN, static_cast<float>(kUntouched));
         return Outcome{QAL_FilterFloatArray(in.data(), out.data(), kN, 0, kN - 1, QAL_FILTER_SAVITZKY_GOLAY, 5, 2),
                        AllUntouched(out)};
     },
     QAL_ERR_MEMORY},
    {"QAL_DerivArray",
     [] {
         V d(kN, kUntouched);
         return Outcome{QAL_DerivArray(kX.data(), kY.data(), d.data(), kN, QAL_DERIV_SPLINE, 1, 0), AllUntouched(d)};
     },
     QAL_ERR_MEMORY},
    {"QAL_DerivFloatArray",  // three copies, then the work array
     [] {
         F x(kX.begin(), kX.end()), y(kY.begin(), kY.end()), d(kN, static_cast<float>(kUntouched));
         const int status = QAL_DerivFloatArray(x.data(), y.data(), d.data(), kN, QAL_DERIV_LINE_FIT, 2, 4);
         return Outcome{status, AllUntouched(d) && x == F(kX.begin(), kX.end()) && y == F(kY.begin(), kY.end())};
     },
     QAL_ERR_MEMORY},
    {"QAL_FirstDerivativeRidder",  // the tableau; the caller's function is not called without it
     [] {
         double error = kUntouched;
         const double d = QAL_FirstDerivativeRidder(Cube, 1.0, 0.5, &error);
         return Outcome{SameBits(1e25, d) ? QAL_ERR_MEMORY : QAL_OK, SameBits(1e15, error)};
     },
     QAL_ERR_MEMORY},
    {"QAL_FirstDerivativeGolay",  // the kernel's first build; a failed one is retried at the next call
     [] {
         qal::detail::testing::forgetGolayKernel();
         const double d = QAL_FirstDerivativeGolay(kX.data(), kY.data(), kN, 4.5);
         return Outcome{SameBits(1e25, d) ? QAL_ERR_MEMORY : QAL_OK, true};
     },
     QAL_ERR_MEMORY},
    {"t_QalMatrix",  // construction and copies raise with the element count; nothing is left behind
     [] {
         try {
             t_QalMatrix<double> m(20, 30);
             t_QalMatrix<double> copy(m);
             t_QalMatrix<double> assigned(2, 2);
             assigned = copy;
         } catch (const k_QalExceptionIndex& e) {
             return Outcome{QAL_ERR_MEMORY, e.m_index == 600 || e.m_index == 4};
         }
         return Outcome{QAL_OK, false};
     },
     QAL_ERR_MEMORY},
};

// Each function fails with its told status and outputs at every allocation, until the call
// that can have them all succeeds.
TEST(AllocationSweep, EveryAllocationOfEveryAllocatingFunctionFailsCleanly) {
    for (const Allocating& f : kAllocating) {
        for (int k = 1;; ++k) {
            alloc::resetAllocationCounters();
            alloc::failAllocationNumber(k);
            const Outcome o = f.run();
            alloc::failAllocationNumber(0);
            EXPECT_EQ(0, alloc::allocationsLive()) << f.name << ", allocation " << k << " failing";
            if (alloc::allocationsMade() < k) {  // nothing failed: the call had all it asked for
                EXPECT_EQ(QAL_OK, o.status) << f.name;
                EXPECT_GT(k, 1) << f.name << " made no allocation";
                break;
            }
            EXPECT_EQ(f.failStatus, o.status) << f.name << ", allocation " << k << " failing";
            EXPECT_TRUE(o.failureOutputs) << f.name << ", allocation " << k << " failing";
            if (k > 64) {
                ADD_FAILURE() << f.name << " still failing at allocation " << k;
                break;
            }
        }
    }
    alloc::resetAllocationCounters();
}

// ---- Census --------------------------------------------------------------------------

struct Quiet {
    const char* name;
    void (*run)();
};

V Copy(const V& v) { return v; }

// One ordinary call of every other exported function; none may allocate.
const Quiet kQuiet[] = {
    {"InitQalLibExtDLL", [] { InitQalLibExtDLL(); }},
    {"QAL_DeleteMatrix", [] { QAL_DeleteMatrix(nullptr, 0, 0); }},
    {"QAL_Mt_Swap", [] { double a = 1, b = 2; QAL_Mt_Swap(&a, &b); }},
    {"QAL_D2F", [] { float f[1]; double* d = nullptr; QAL_D2F(f, 1, &d); }},
    {"QAL_IsEven", [] { (void)QAL_IsEven(3); }},
    {"QAL_IsOdd", [] { (void)QAL_IsOdd(3); }},
    {"QAL_exp", [] { (void)QAL_exp(1.5); }},
    {"QAL_log", [] { (void)QAL_log(1.5); }},
    {"QAL_log10", [] { (void)QAL_log10(1.5); }},
    {"QAL_pow", [] { (void)QAL_pow(1.5, 2.5); }},
    {"QAL_pow10", [] { (void)QAL_pow10(1.5); }},
    {"QAL_sqrt", [] { (void)QAL_sqrt(1.5); }},
    {"QAL_mult", [] { (void)QAL_mult(1.5f, 2.5f); }},
    {"QAL_ReleaseArray", [] { QAL_ReleaseArray(nullptr); }},
    {"QAL_SumOf", [] { (void)QAL_SumOf(kY.data(), kN); F f{1, 2}; (void)QAL_SumOf(f.data(), 2); }},
    {"QAL_Mean", [] { double m, s; QAL_Mean(kY.data(), kN, &m, &s); }},
    {"QAL_SumSquareResiduen", [] { (void)QAL_SumSquareResiduen(kY.data(), kN); }},
    {"QAL_Normalize", [] { V v = Copy(kY); QAL_Normalize(v.data(), kN); }},
    {"QAL_LocateValue", [] { int i; QAL_LocateValue(4.5, kX.data(), kN, &i); }},
    {"QAL_FindAbsValues", [] { double a, b; QAL_FindAbsValues(4.5, kX.data(), kY.data(), kN, &a, &b); }},
    {"QAL_SortStraightInsert", [] { F k{3, 1, 2}; QAL_SortStraightInsert(k.data(), nullptr, nullptr, 3, 0); }},
    {"QAL_LUSolveEqua", [] { V a{2, 0, 0, 2}, b{1, 1}; const double* r[] = {a.data(), a.data() + 2}; int p[] = {0, 1}; QAL_LUSolveEqua(r, 2, p, b.data()); }},
    {"QAL_LinFit", [] { double a, b; QAL_LinFit(kX.data(), kY.data(), kN, &a, &b); }},
    {"QAL_LinFitFloat", [] { F x{1, 2}, y{3, 5}; float a, b; QAL_LinFitFloat(x.data(), y.data(), 2, &a, &b); }},
    {"QAL_CalcLinX", [] { (void)QAL_CalcLinX(2.5, kX.data(), kY.data(), kN); }},
    {"QAL_CalcLinY", [] { (void)QAL_CalcLinY(2.5, kX.data(), kY.data(), kN); }},
    {"QAL_CalcLinXFloat", [] { F x{1, 2}, y{3, 5}; (void)QAL_CalcLinXFloat(1.5f, x.data(), y.data(), 2); }},
    {"QAL_CalcLinYFloat", [] { F x{1, 2}, y{3, 5}; (void)QAL_CalcLinYFloat(4.0f, x.data(), y.data(), 2); }},
    {"QAL_StraightLineIntersection", [] { float a, b; QAL_StraightLineIntersection(&a, &b, 1, 2, 3, -1); }},
    {"QAL_LinearRegression", [] { double a, b; QAL_LinearRegression(kX.data(), kY.data(), kN, &a, &b); }},
    {"QAL_LinearRegressionFloat", [] { F x{1, 2}, y{3, 5}; float a, b; QAL_LinearRegressionFloat(x.data(), y.data(), 2, &a, &b); }},
    {"QAL_CubicSplineInterpolation", [] { V t(kN, 0.0); double y; QAL_CubicSplineInterpolation(kX.data(), kY.data(), t.data(), kN, 4.5, &y); }},
    {"QAL_CheckInOutArrays", [] { F v{1, 2}, u{1.5f, 1.5f}; int c; QAL_CheckInOutArrays(v.data(), nullptr, u.data(), 2, &c); }},
    {"QAL_FirstDerivative", [] { V t(kN, 0.0); double d; QAL_FirstDerivative(kX.data(), kY.data(), t.data(), kN, 4.5, &d); }},
    {"QAL_SecondDerivative", [] { V t(kN, 0.0); double d; QAL_SecondDerivative(kX.data(), kY.data(), t.data(), kN, 4.5, &d); }},
    {"QAL_FirstDerivativeLinReg", [] { (void)QAL_FirstDerivativeLinReg(kX.data(), kY.data(), kN, 4, 4.5); }},
    {"QAL_Kruemmung", [] { F x{0, 1, 2}, y{0, 1, 4}, a(3), b(3); QAL_Kruemmung(x.data(), y.data(), a.data(), b.data(), 3); }},
    {"QAL_Kruemmung2", [] { F x{0, 1, 2}, y{0, 1, 4}, a(3); QAL_Kruemmung2(x.data(), y.data(), a.data(), 3, 0, 1); }},
    {"QAL_GetExtremum", [] { double a, b; int k; QAL_GetExtremum(kX.data(), kY.data(), 9, &a, &b, &k, 1, 5.0f); }},
    {"QAL_GetNextExtremum", [] { double a, b; QAL_GetNextExtremum(kX.data(), kY.data(), kN, &a, &b, 3, QAL_EXTREMUM_MAX, 1, 0.0f); }},
    {"QAL_GetRangeExtremum", [] { double a, b; QAL_GetRangeExtremum(kX.data(), kY.data(), kN, &a, &b, 3, QAL_EXTREMUM_MAX, 1, 0.0f); }},
    {"QAL_GetAutoRangeExtremum", [] { double a, b; QAL_GetAutoRangeExtremum(kX.data(), kY.data(), kN, &a, &b, 3, QAL_EXTREMUM_MIN, 1, 0.0f); }},
    {"QAL_GetAutoExtremum", [] { double a, b; QAL_GetAutoExtremum(kX.data(), kY.data(), kN, &a, &b, QAL_EXTREMUM_MAX, 0, 0.0f); }},
    {"QAL_FindX_at_YThreshold", [] { double a, b; QAL_FindX_at_YThreshold(kX.data(), kY.data(), kN, 0, 0, 2, 4.5f, 0, &a, &b); }},
    {"QAL_GetY_at_XDiff", [] { double a, b; QAL_GetY_at_XDiff(kX.data(), kY.data(), kN, 0, 0, 2, 3.3f, &a, &b); }},
    {"QAL_Find_LastPoint", [] { double a, b; QAL_Find_LastPoint(kX.data(), kY.data(), kN, 0, 0, &a, &b); }},
    {"QAL_Calc_AbsMaximum", [] { double a, b; QAL_Calc_AbsMaximum(kX.data(), kY.data(), kN, &a, &b); }},
    {"QAL_Calc_AbsMinimum", [] { double a, b; QAL_Calc_AbsMinimum(kX.data(), kY.data(), kN, &a, &b); }},
    {"QAL_CalcBoundaries", [] { F b{1, 2}, l(2), u(2); QAL_CalcBoundaries(b.data(), nullptr, l.data(), u.data(), 2, 2, 10, 3, 1); }},
    {"QAL_Trapez", [] { (void)QAL_Trapez(Cube, 0, 1, 1); (void)QAL_Trapez(Cube, 0, 1, 2); }},
    {"QAL_RootBisection", [] { (void)QAL_RootBisection(Cube, -1, 2, 1e-9); }},
    {"k_QalExceptionIndex", [] { k_QalExceptionIndex e(3); (void)e.GetMessageW(); }},
    {"t_QalVector", [] { t_QalVector<double> v(3); v(1) = 2; v.SetSize(5); t_QalVector<int> w(2); (void)w(0); }},
    {"k_Qal::Power", [] { (void)k_Qal::Power(2, 3); }},
    {"k_Qal::Log", [] { (void)k_Qal::Log(2); }},
    {"k_Qal::Sqrt", [] { (void)k_Qal::Sqrt(2); }},
    {"k_Qal::InfRepair", [] { double d = 2e25; float f = 2e25f; k_Qal::InfRepair(d); k_Qal::InfRepair(f); }},
    {"k_Qal::ZeroRepair", [] { double d = 0; float f = 0; k_Qal::ZeroRepair(d); k_Qal::ZeroRepair(f); }},
    {"k_Qal::Sum", [] { t_QalVector<double> v(3); (void)k_Qal::Sum(v); }},
    {"k_Qal::Sum2", [] { t_QalVector<double> v(3); (void)k_Qal::Sum2(v); }},
    {"k_Qal::SumMult", [] { t_QalVector<double> v(3); (void)k_Qal::SumMult(v, v); }},
    {"k_Qal::SumDiv", [] { t_QalVector<double> v(3); (void)k_Qal::SumDiv(v, v); }},
    {"k_Qal::SumInv", [] { t_QalVector<double> v(3); (void)k_Qal::SumInv(v); }},
    {"k_Qal::SumInv2", [] { t_QalVector<double> v(3); (void)k_Qal::SumInv2(v); }},
    {"k_Qal::Mean", [] { t_QalVector<double> v(3); double m, s; k_Qal::Mean(v, m); k_Qal::Mean(v, m, s); }},
    {"k_Qal::NVariance", [] { t_QalVector<double> v(3); double m, s; k_Qal::NVariance(v, m, s); }},
    {"k_Qal::Min", [] { t_QalVector<double> v(3); double e; k_Qal::Min(v, e); }},
    {"k_Qal::Max", [] { t_QalVector<double> v(3); double e; k_Qal::Max(v, e); }},
    {"k_Qal::IndexMaxFraction", [] { t_QalVector<double> v(3); (void)k_Qal::IndexMaxFraction(v, v); }},
    {"k_Qal::MaxFraction", [] { t_QalVector<double> v(3); (void)k_Qal::MaxFraction(v, v); }},
    {"k_Qal::MinFraction", [] { t_QalVector<double> v(3); (void)k_Qal::MinFraction(v, v); }},
    {"k_Qal::LinCorCoef", [] { t_QalVector<double> v(3); (void)k_Qal::LinCorCoef(v, v, v); }},
    {"k_Qal::GaussJordan",  // the caller's matrices allocate, the elimination does not
     [] {
         t_QalMatrix<double> a(2, 2), b(2, 1);
         a(0, 0) = 2, a(0, 1) = 1, a(1, 0) = 1, a(1, 1) = 3, b(0, 0) = 1, b(1, 0) = 2;
         alloc::resetAllocationCounters();  // counted from here: the elimination alone
         k_Qal::GaussJordan(a, 2, b, 1);
     }},
};

std::string HeaderText(const char* file) {
    std::ifstream in(std::string(QAL_PUBLIC_HEADERS) + "/" + file);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Every exported function: QAL_API declarations of qal.h, the classes and k_Qal's statics.
std::set<std::string> ExportedNames() {
    std::set<std::string> names;
    const std::string flat = HeaderText("qal.h"), classes = HeaderText("qal_classes.h");
    const std::regex function(R"(QAL_API[^(;]*?\b(\w+)\s*\()"), cls(R"(class QAL_API (\w+)\b)"),
        templ(R"(template class QAL_API (\w+)<)"), member(R"(\bstatic [^(;]*?\b(\w+)\s*\()");
    for (std::sregex_iterator i(flat.begin(), flat.end(), function), end; i != end; ++i) names.insert((*i)[1]);
    for (std::sregex_iterator i(classes.begin(), classes.end(), cls), end; i != end; ++i) {
        if ((*i)[1] != "k_Qal") names.insert((*i)[1]);
    }
    for (std::sregex_iterator i(classes.begin(), classes.end(), templ), end; i != end; ++i) names.insert((*i)[1]);
    for (std::sregex_iterator i(classes.begin(), classes.end(), member), end; i != end; ++i) {
        names.insert("k_Qal::" + (*i)[1].str());
    }
    return names;
}

TEST(AllocationCensus, EveryFunctionThatAllocatesIsInTheSweep) {
    std::set<std::string> covered;
    for (const Allocating& f : kAllocating) {
        alloc::resetAllocationCounters();
        f.run();
        EXPECT_GT(alloc::allocationsMade(), 0) << f.name << " is in the sweep but does not allocate";
        covered.insert(f.name);
    }
    for (const Quiet& f : kQuiet) {
        alloc::resetAllocationCounters();
        f.run();
        EXPECT_EQ(0, alloc::allocationsMade()) << f.name << " allocates but is not in the sweep";
        covered.insert(f.name);
    }
    alloc::resetAllocationCounters();
    const std::set<std::string> exported = ExportedNames();
    EXPECT_GT(exported.size(), 80u);  // the headers were read
    for (const std::string& name : exported) EXPECT_EQ(1u, covered.count(name)) << name << " is in no table";
    for (const std::string& name : covered) EXPECT_EQ(1u, exported.count(name)) << name << " is not exported";
}

}  // namespace
}  // namespace qal::test
