"""qallib against the C++ library, bit for bit: one table of cases per family, the failures
and NaN cases among them. Each row is a qallib call, the C++ routine's name and its
arguments as the oracle takes them (C++ order, outputs left out)."""

import numpy as np
import pytest

import qallib as q
from conftest import same_as_oracle

f32 = np.float32
NAN = float("nan")
INF = float("inf")


def a(*values, t=np.float64):
    return np.array(values, dtype=t)


def rows(*cases):
    """pytest params with readable ids: the C++ name and the row's place."""
    return [pytest.param(call, name, args, id=f"{name}-{k}") for k, (name, call, *args) in enumerate(cases)]


def check(oracle, call, name, args):
    same_as_oracle(oracle, call, name, *args)


# The callables of the oracle, by number: the same double arithmetic on both sides.
def cube(t):
    return t * t * t


def shifted(t):
    return t - 0.3


def nothing(t):
    return NAN


X5 = a(0, 1, 2, 3, 4)
Y5 = a(1, 2, 5, 10, 17)
K = a(3, 1, NAN, 2, 1, t=f32)
A3 = a(4, 3, 2, 2, 1, 3, 3, 2, 1).reshape(3, 3)

ARITH = rows(
    ("QAL_exp", lambda: q.exp(30.0), 30.0),
    ("QAL_exp", lambda: q.exp(30.0000001), 30.0000001),
    ("QAL_log", lambda: q.log(0.9e-25), 0.9e-25),
    ("QAL_log", lambda: q.log(NAN), NAN),
    ("QAL_log10", lambda: q.log10(1e-25), 1e-25),
    ("QAL_log10", lambda: q.log10(2e25), 2e25),
    ("QAL_pow10", lambda: q.pow10(-25.1), -25.1),
    ("QAL_pow10", lambda: q.pow10(0.3), 0.3),
    ("QAL_sqrt", lambda: q.sqrt(-2.0), -2.0),
    ("QAL_sqrt", lambda: q.sqrt(1e300), 1e300),
    ("QAL_pow", lambda: q.pow(0.0, 0.0), 0.0, 0.0),
    ("QAL_pow", lambda: q.pow(-8.0, 1 / 3), -8.0, 1 / 3),
    ("QAL_pow", lambda: q.pow(1e13, 2.0), 1e13, 2.0),
    ("QAL_pow", lambda: q.pow(2.0, 0.5), 2.0, 0.5),
    ("QAL_mult", lambda: q.mult(f32(3e12), f32(1e13)), f32(3e12), f32(1e13)),
    ("QAL_mult", lambda: q.mult(0.1, 3.0), f32(0.1), f32(3.0)),
    ("QAL_CalcLog", lambda: q.calc_log(a(1, 10, 0.5, 1e-30, t=f32), 1), a(1, 10, 0.5, 1e-30, t=f32), 1),
    ("QAL_CalcLog", lambda: q.calc_log(a(1, 10, 5, 1, t=f32), 1), a(1, 10, 5, 1, t=f32), 1),
    ("QAL_CalcLog", lambda: q.calc_log(a(2, 2, t=f32), 2), a(2, 2, t=f32), 2),
    ("QAL_CalcLog", lambda: q.calc_log(a(t=f32)), a(t=f32), 0),
    ("QAL_Mean", lambda: q.mean(Y5), Y5),
    ("QAL_Mean", lambda: q.mean(a(1, NAN)), a(1, NAN)),
    ("QAL_Mean", lambda: q.mean(a()), a()),
    ("QAL_SumSquareResiduen", lambda: q.sum_square_residuen(a(1e8, 1e8 + 1, 1e8 + 2)), a(1e8, 1e8 + 1, 1e8 + 2)),
    ("QAL_Normalize", lambda: q.normalize(a(1, 2, 3.5)), a(1, 2, 3.5)),
    ("QAL_Normalize", lambda: q.normalize(a(1, -1)), a(1, -1)),
    ("QAL_LocateValue", lambda: q.locate_value(2.5, X5), 2.5, X5),
    ("QAL_LocateValue", lambda: q.locate_value(2.5, X5[::-1]), 2.5, X5[::-1].copy()),
    ("QAL_LocateValue", lambda: q.locate_value(4.0, X5), 4.0, X5),
    ("QAL_LocateValue", lambda: q.locate_value(-1.0, X5), -1.0, X5),
    ("QAL_LocateValue", lambda: q.locate_value(NAN, X5), NAN, X5),
    ("QAL_LocateValue", lambda: q.locate_value(1.0, a(1)), 1.0, a(1)),
    ("QAL_FindAbsValues", lambda: q.find_abs_values(2.5, X5, Y5), 2.5, X5, Y5),
    ("QAL_FindAbsValues", lambda: q.find_abs_values(9.0, X5, Y5), 9.0, X5, Y5),
    ("QAL_FindAbsValues", lambda: q.find_abs_values(NAN, a(1), a(2)), NAN, a(1), a(2)),
    ("QAL_SortStraightInsert", lambda: q.sort_straight_insert(K, K * 2, np.arange(5, dtype=np.int32)), K, K * 2,
     np.arange(5, dtype=np.int32)),
    ("QAL_SortStraightInsert", lambda: q.sort_straight_insert(K), K, None, None),
    ("QAL_IsEven", lambda: q.is_even(-3), -3),
    ("QAL_IsOdd", lambda: q.is_odd(-3), -3),
)

LU, PIVOTS, _ = q.lu_decomposition(A3)
SOLVERS = rows(
    ("QAL_LUDecomposition", lambda: q.lu_decomposition(A3), 3, A3),
    ("QAL_LUDecomposition", lambda: q.lu_decomposition(a(1, 2, NAN, 0).reshape(2, 2)), 2, a(1, 2, NAN, 0)),
    ("QAL_LUDecomposition", lambda: q.lu_decomposition(a(1, 2, 2, 4).reshape(2, 2)), 2, a(1, 2, 2, 4)),
    ("QAL_LUDecomposition", lambda: q.lu_decomposition(np.zeros((0, 0))), 0, a()),
    ("QAL_LUSolveEqua", lambda: q.lu_solve_equa(LU, PIVOTS, a(1, 2, 3)), 3, LU, PIVOTS, a(1, 2, 3)),
    ("QAL_LUSolveEqua", lambda: q.lu_solve_equa(a(1, 2, 0, 0).reshape(2, 2), np.array([0, 1], np.int32), a(1, 1)),
     2, a(1, 2, 0, 0), np.array([0, 1], np.int32), a(1, 1)),
    ("k_Qal::GaussJordan", lambda: q.k_qal.gauss_jordan(A3, np.eye(3)[:, :2].copy()), 3, 2, A3, np.eye(3)[:, :2].copy()),
    ("k_Qal::GaussJordan", lambda: q.k_qal.gauss_jordan(a(0, 1, 1, 0).reshape(2, 2)), 2, 0, a(0, 1, 1, 0), a()),
    ("k_Qal::GaussJordan", lambda: q.k_qal.gauss_jordan(a(1, 2, 2, 4).reshape(2, 2)), 2, 0, a(1, 2, 2, 4), a()),
)

LINES = rows(
    ("QAL_StraightLineIntersection", lambda: q.straight_line_intersection(1.0, 2.0, 3.0, -0.1),
     f32(1), f32(2), f32(3), f32(-0.1)),
    ("QAL_StraightLineIntersection", lambda: q.straight_line_intersection(1.0, 2.0, 3.0, 2.0),
     f32(1), f32(2), f32(3), f32(2)),
    ("QAL_StraightLineIntersection", lambda: q.straight_line_intersection(1e30, 1e20, 0.0, -1e20),
     f32(1e30), f32(1e20), f32(0), f32(-1e20)),
    ("QAL_StraightLineIntersection", lambda: q.straight_line_intersection(NAN, 2.0, 3.0, 1.0),
     f32(NAN), f32(2), f32(3), f32(1)),
)

INTERPOLATION_TABLE = q.splines(X5, Y5)
WIDE = a(0, 0, 1)
INTERPOLATION = rows(
    ("QAL_Splines", lambda: q.splines(X5, Y5), X5, Y5, INF, INF),
    ("QAL_Splines", lambda: q.splines(X5, Y5, slope_first=0.0, slope_last=NAN), X5, Y5, 0.0, NAN),
    ("QAL_Splines", lambda: q.splines(a(1), a(1)), a(1), a(1), INF, INF),
    ("QAL_CubicSplineInterpolation", lambda: q.cubic_spline_interpolation(X5, Y5, INTERPOLATION_TABLE, 2.5),
     X5, Y5, INTERPOLATION_TABLE, 2.5),
    ("QAL_CubicSplineInterpolation", lambda: q.cubic_spline_interpolation(X5, Y5, INTERPOLATION_TABLE, 5.5),
     X5, Y5, INTERPOLATION_TABLE, 5.5),
    ("QAL_CubicSplineInterpolation", lambda: q.cubic_spline_interpolation(WIDE, a(5, 6, 7), a(0, 0, 0), 0.0),
     WIDE, a(5, 6, 7), a(0, 0, 0), 0.0),
    ("QAL_FirstDerivative", lambda: q.first_derivative(X5, Y5, INTERPOLATION_TABLE, 1.25),
     X5, Y5, INTERPOLATION_TABLE, 1.25),
    ("QAL_FirstDerivative", lambda: q.first_derivative(WIDE, a(5, 6, 7), a(0, 0, 0), NAN),
     WIDE, a(5, 6, 7), a(0, 0, 0), NAN),
    ("QAL_SecondDerivative", lambda: q.second_derivative(X5, Y5, INTERPOLATION_TABLE, 3.5),
     X5, Y5, INTERPOLATION_TABLE, 3.5),
    *[("QAL_Interpol", lambda o=option: q.interpol(2.5, X5 + 1, Y5, option=o), 2.5, X5 + 1, Y5, None, option)
      for option in (0, 1, 2, 3, 4, 5, 6, 12, 14, 15, -1, 99)],
    ("QAL_Interpol", lambda: q.interpol(2.5, X5, Y5, INTERPOLATION_TABLE, q.INTERPOL_SPLINE),
     2.5, X5, Y5, INTERPOLATION_TABLE, 4),
    ("QAL_Interpol", lambda: q.interpol(4.0, X5, Y5, option=5), 4.0, X5, Y5, None, 5),
    ("QAL_Interpol", lambda: q.interpol(NAN, X5, Y5, option=5), NAN, X5, Y5, None, 5),
    ("QAL_Interpol", lambda: q.interpol(3.0, a(1), a(7)), 3.0, a(1), a(7), None, 2),
    ("QAL_Interpol", lambda: q.interpol(0.5, a(1, 2, 1), Y5[:3]), 0.5, a(1, 2, 1), Y5[:3], None, 2),
    ("QAL_InterpolFloatArrays", lambda: q.interpol_float_arrays(X5.astype(f32), Y5.astype(f32),
                                                                a(0.5, 2.25, 3.75, t=f32), option=5),
     X5.astype(f32), Y5.astype(f32), a(0.5, 2.25, 3.75, t=f32), 5, f32(NAN)),
    ("QAL_InterpolFloatArrays", lambda: q.interpol_float_arrays(X5.astype(f32), Y5.astype(f32),
                                                                a(-1, 2.5, 4, t=f32), option=4, fill=-7.0),
     X5.astype(f32), Y5.astype(f32), a(-1, 2.5, 4, t=f32), 4, f32(-7)),
    ("QAL_CheckInOutArrays", lambda: q.check_in_out_arrays(a(1, 2, 3, NAN, t=f32), a(2, 2, 2, 2, t=f32),
                                                           a(0, 0, 4, 0, t=f32)),
     a(1, 2, 3, NAN, t=f32), a(2, 2, 2, 2, t=f32), a(0, 0, 4, 0, t=f32)),
    ("QAL_CheckInOutArrays", lambda: q.check_in_out_arrays(a(1, 2, 3, t=f32), a(2, NAN, 2, t=f32)),
     a(1, 2, 3, t=f32), a(2, NAN, 2, t=f32), None),
    ("QAL_CheckInOutArrays", lambda: q.check_in_out_arrays(a(t=f32), a(t=f32)), a(t=f32), a(t=f32), None),
    ("QAL_PolynomialInterpolation", lambda: q.polynomial_interpolation(X5, np.sin(X5), 2.6), X5, np.sin(X5), 2.6),
    ("QAL_PolynomialInterpolation", lambda: q.polynomial_interpolation(a(1, 1), a(2, 3), 5.0), a(1, 1), a(2, 3), 5.0),
    ("QAL_PolynomialInterpolation", lambda: q.polynomial_interpolation(a(1), a(2), 5.0), a(1), a(2), 5.0),
    ("QAL_RationialInterpolation", lambda: q.rationial_interpolation(X5, 1 / (X5 + 0.5), 2.6),
     X5, 1 / (X5 + 0.5), 2.6),
    ("QAL_RationialInterpolation", lambda: q.rationial_interpolation(X5, Y5, 3.0), X5, Y5, 3.0),
    ("QAL_RationialInterpolation", lambda: q.rationial_interpolation(a(), a(), 3.0), a(), a(), 3.0),
    ("QAL_AkimaSub", lambda: q.akima_sub(X5.astype(f32), np.sin(X5).astype(f32)),
     X5.astype(f32), np.sin(X5).astype(f32)),
    ("QAL_AkimaSub", lambda: q.akima_sub(a(0, 1, 1, 2, t=f32), a(0, 1, 2, 3, t=f32)),
     a(0, 1, 1, 2, t=f32), a(0, 1, 2, 3, t=f32)),
    ("QAL_AkimaSub", lambda: q.akima_sub(a(0, 2, 1, t=f32), a(0, 1, 2, t=f32)), a(0, 2, 1, t=f32), a(0, 1, 2, t=f32)),
    ("QAL_AkimaSub", lambda: q.akima_sub(a(0, 1, t=f32), a(0, 1, t=f32)), a(0, 1, t=f32), a(0, 1, t=f32)),
)

PARABOLA_X = np.arange(9.0)
PARABOLA = 100 - (PARABOLA_X - 4) ** 2
SMOOTHING = rows(
    ("QAL_SavitzkyGolayCoeffizient", lambda: q.savitzky_golay_coeffizient(2, 2, 0, 2), 5, 2, 2, 0, 2),
    ("QAL_SavitzkyGolayCoeffizient", lambda: q.savitzky_golay_coeffizient(3, 1, 1, 3, coef_count=7), 7, 3, 1, 1, 3),
    ("QAL_SavitzkyGolayCoeffizient", lambda: q.savitzky_golay_coeffizient(2, 2, 3, 2), 5, 2, 2, 3, 2),
    ("QAL_SetFilterCoefficients", lambda: q.set_filter_coefficients(q.FILTER_TRIANGLE, 4), 11, 4, 2),
    ("QAL_SetFilterCoefficients", lambda: q.set_filter_coefficients(20, 8, 4), 20, 8, 4),
    ("QAL_SetFilterCoefficients", lambda: q.set_filter_coefficients(20, 5, 3), 20, 5, 3),
    ("QAL_SetFilterCoefficients", lambda: q.set_filter_coefficients(10, 10001), 10, 10001, 2),
    ("QAL_FirstDerivativeRidder", lambda: q.first_derivative_ridder(cube, 0.5, 0.1), 0, 0.5, 0.1),
    ("QAL_FirstDerivativeRidder", lambda: q.first_derivative_ridder(nothing, 0.5, 0.1), 2, 0.5, 0.1),
    ("QAL_FirstDerivativeRidder", lambda: q.first_derivative_ridder(cube, 0.5, 1e-26), 0, 0.5, 1e-26),
    ("QAL_Kruemmung", lambda: q.kruemmung(X5.astype(f32), (Y5 * 1.1).astype(f32)),
     X5.astype(f32), (Y5 * 1.1).astype(f32)),
    ("QAL_Kruemmung", lambda: q.kruemmung(a(1, t=f32), a(1, t=f32)), a(1, t=f32), a(1, t=f32)),
    *[("QAL_Kruemmung2", lambda g=gap, c=chord: q.kruemmung2(X5.astype(f32), (Y5 / 3).astype(f32), g, c),
       X5.astype(f32), (Y5 / 3).astype(f32), gap, chord) for gap, chord in ((0, 2), (3, 1), (1, 0), (-2, 1))],
)

CURVES = rows(
    ("QAL_GetExtremum", lambda: q.get_extremum(PARABOLA_X, PARABOLA, min_height_percent=5.0),
     PARABOLA_X, PARABOLA, 1, f32(5)),
    ("QAL_GetExtremum", lambda: q.get_extremum(PARABOLA_X, PARABOLA, False, 5.0), PARABOLA_X, PARABOLA, 0, f32(5)),
    ("QAL_GetExtremum", lambda: q.get_extremum(PARABOLA_X, PARABOLA, min_height_percent=10.0),
     PARABOLA_X, PARABOLA, 1, f32(10)),
    ("QAL_GetExtremum", lambda: q.get_extremum(PARABOLA_X * 1e6, 10 + 1e-12 * (PARABOLA_X * 1e6 - 4e6) ** 2),
     PARABOLA_X * 1e6, 10 + 1e-12 * (PARABOLA_X * 1e6 - 4e6) ** 2, 1, f32(0)),
    ("QAL_GetExtremum", lambda: q.get_extremum(X5[:4], Y5[:4]), X5[:4], Y5[:4], 1, f32(0)),
    ("QAL_GetExtremum", lambda: q.get_extremum(a(0, 0, 0), a(1, 2, 1)), a(0, 0, 0), a(1, 2, 1), 1, f32(0)),
    ("QAL_GetExtremum", lambda: q.get_extremum(PARABOLA_X, np.where(PARABOLA_X == 2, NAN, PARABOLA)),
     PARABOLA_X, np.where(PARABOLA_X == 2, NAN, PARABOLA), 1, f32(0)),
    ("QAL_GetNextExtremum", lambda: q.get_next_extremum(PARABOLA_X, PARABOLA, -300, 11),
     PARABOLA_X, PARABOLA, -300, 11, 1, f32(0)),
    ("QAL_GetRangeExtremum", lambda: q.get_range_extremum(PARABOLA_X, PARABOLA, 3, 99),
     PARABOLA_X, PARABOLA, 3, 99, 1, f32(0)),
    ("QAL_GetAutoExtremum", lambda: q.get_auto_extremum(X5[:4], Y5[:4], 11), X5[:4], Y5[:4], 11, 1, f32(0)),
    ("QAL_GetAutoExtremum", lambda: q.get_auto_extremum(np.arange(12.0), np.arange(12.0), 11),
     np.arange(12.0), np.arange(12.0), 11, 1, f32(0)),
    *[("QAL_FindX_at_YThreshold", lambda L=level, d=direction, m=mode: q.find_x_at_y_threshold(
        X5, a(0, 1, 2, 3, 3), L, direction=d, result_mode=m), X5, a(0, 1, 2, 3, 3), 1, direction, mode, f32(level),
       f32(0)) for level, direction, mode in ((1.5, 1, 0), (1.5, 1, 2), (2.5, 1, 2), (2.5, 2, 2), (3.0, 1, 2),
                                              (-1, 1, 2), (1.0, 0, 0), (0.5, 2, 2))],
    ("QAL_FindX_at_YThreshold", lambda: q.find_x_at_y_threshold(a(1), a(2), 1.0), a(1), a(2), 1, 1, 2, f32(1), f32(0)),
    ("QAL_FindX_at_YThreshold", lambda: q.find_x_at_y_threshold(X5, a(1, NAN, 3, 0, 5), 2.0),
     X5, a(1, NAN, 3, 0, 5), 1, 1, 2, f32(2), f32(0)),
    *[("QAL_GetY_at_XDiff", lambda d=diff, r=direction, m=mode: q.get_y_at_x_diff(X5 / 3, Y5, d, r, m),
       X5 / 3, Y5, direction, mode, f32(diff)) for diff, direction, mode in
      ((0.7, 1, 2), (0.7, 1, 1), (-0.7, 2, 2), (0.0, 2, 2), (5.0, 1, 2), (5.0, 2, 2))],
    ("QAL_Find_LastPoint", lambda: q.find_last_point(X5, Y5), X5, Y5),
    ("QAL_Find_LastPoint", lambda: q.find_last_point(a(), a()), a(), a()),
    ("QAL_Calc_AbsMaximum", lambda: q.calc_abs_maximum(X5, a(1, 3, 3, NAN, 2)), X5, a(1, 3, 3, NAN, 2)),
    ("QAL_Calc_AbsMaximum", lambda: q.calc_abs_maximum(X5, a(NAN, 3, 3, 1, 2)), X5, a(NAN, 3, 3, 1, 2)),
    ("QAL_Calc_AbsMinimum", lambda: q.calc_abs_minimum(X5, a(2, 1, 1, 3, 0)), X5, a(2, 1, 1, 3, 0)),
    ("QAL_Calc_AbsMinimum", lambda: q.calc_abs_minimum(a(7), a(8)), a(7), a(8)),
    *[("QAL_CalcBoundaries", lambda u=upper, lo=lower, s=spread: q.calc_boundaries(
        a(1, 2, 3, t=f32), u, 2.5, lo, 0.1, s), a(1, 2, 3, t=f32), spread, upper, f32(2.5), lower, f32(0.1))
      for upper, lower, spread in ((1, 2, a(1, 0.5, NAN, t=f32)), (3, 1, a(1, 1, 1, t=f32)), (1, 3, None),
                                   (4, 2, None))],
    ("QAL_Trapez", lambda: tuple(q.trapez(cube, 0.0, 1.0, stage) for stage in range(1, 7)), 0, 0.0, 1.0, 6),
    ("QAL_RootBisection", lambda: q.root_bisection(shifted, 0.0, 1.0, 1e-9), 1, 0.0, 1.0, 1e-9),
    ("QAL_RootBisection", lambda: q.root_bisection(shifted, 0.5, 1.0, 1e-9), 1, 0.5, 1.0, 1e-9),
    ("QAL_RootBisection", lambda: q.root_bisection(nothing, 0.0, 1.0, 1e-9), 2, 0.0, 1.0, 1e-9),
)

V = a(0.5, -2.0, 0.0, NAN, 4.0, 1e-26)
W = a(2.0, 0.0, 3.0, 1.0, NAN, 1.0)
K_QAL = rows(
    ("k_Qal::Power", lambda: q.k_qal.power(2.0, 0.5), 2.0, 0.5),
    ("k_Qal::Power", lambda: q.k_qal.power(1e30, 3.0), 1e30, 3.0),
    ("k_Qal::Power", lambda: q.k_qal.power(0.0, -1.0), 0.0, -1.0),
    ("k_Qal::Log", lambda: q.k_qal.log(0.0), 0.0),
    ("k_Qal::Sqrt", lambda: q.k_qal.sqrt(-9.0), -9.0),
    ("k_Qal::InfRepair", lambda: q.k_qal.inf_repair(-1e30), -1e30),
    ("k_Qal::InfRepair", lambda: q.k_qal.inf_repair(NAN), NAN),
    ("k_Qal::InfRepairFloat", lambda: q.k_qal.inf_repair(f32(1e30)), f32(1e30)),
    ("k_Qal::ZeroRepair", lambda: q.k_qal.zero_repair(-0.0), -0.0),
    ("k_Qal::ZeroRepairFloat", lambda: q.k_qal.zero_repair(f32(-1e-30)), f32(-1e-30)),
    ("k_Qal::Sum", lambda: q.k_qal.sum(W), W),
    ("k_Qal::Sum2", lambda: q.k_qal.sum2(V), V),
    ("k_Qal::SumInv", lambda: q.k_qal.sum_inv(V), V),
    ("k_Qal::SumInv2", lambda: q.k_qal.sum_inv2(V), V),
    ("k_Qal::SumMult", lambda: q.k_qal.sum_mult(V, W), V, W),
    ("k_Qal::SumDiv", lambda: q.k_qal.sum_div(V, W), V, W),
    ("k_Qal::IndexMaxFraction", lambda: q.k_qal.index_max_fraction(W, V), W, V),
    ("k_Qal::MaxFraction", lambda: q.k_qal.max_fraction(W, V), W, V),
    ("k_Qal::MinFraction", lambda: q.k_qal.min_fraction(a(1), a(0)), a(1), a(0)),
    ("k_Qal::Mean", lambda: q.k_qal.mean(Y5), Y5),
    ("k_Qal::Mean", lambda: q.k_qal.mean(a()), a()),
    ("k_Qal::NVariance", lambda: q.k_qal.n_variance(Y5), Y5),
    ("k_Qal::Min", lambda: q.k_qal.min(a(NAN, 2, 1, 1)), a(NAN, 2, 1, 1)),
    ("k_Qal::Max", lambda: q.k_qal.max(W), W),
    ("k_Qal::Max", lambda: q.k_qal.max(a()), a()),
    ("k_Qal::LinCorCoef", lambda: q.k_qal.lin_cor_coef(X5, Y5, a(1, 2, 1, 2, 1)), X5, Y5, a(1, 2, 1, 2, 1)),
)


@pytest.mark.parametrize("call, name, args", ARITH + SOLVERS + LINES + INTERPOLATION + SMOOTHING + CURVES + K_QAL)
def test_matches_the_library(oracle, call, name, args):
    check(oracle, call, name, args)


def twin_rows(t, x, y):
    """The functions with a float twin, on the sample curve in dtype t."""
    double = t == np.float64
    name = {"sum": "QAL_SumOf" if double else "QAL_SumOfFloat"}
    for routine in ("LinFit", "CalcLinX", "CalcLinY", "LinearRegression", "DerivArray", "FilterArray"):
        float_name = {"DerivArray": "QAL_DerivFloatArray", "FilterArray": "QAL_FilterFloatArray"}.get(
            routine, f"QAL_{routine}Float")
        name[routine] = f"QAL_{routine}" if double else float_name
    s = float if double else f32
    last = len(y) - 1
    cases = [
        (name["sum"], lambda: q.sum_of(y), y),
        (name["LinFit"], lambda: q.lin_fit(x, y), x, y),
        (name["LinFit"], lambda: q.lin_fit(x[:1], y[:1]), x[:1], y[:1]),
        (name["CalcLinX"], lambda: q.calc_lin_x(7.3, x, y), s(7.3), x, y),
        (name["CalcLinY"], lambda: q.calc_lin_y(40.1, x, y), s(40.1), x, y),
        (name["CalcLinY"], lambda: q.calc_lin_y(40.1, x, np.full_like(y, 3)), s(40.1), x, np.full_like(y, 3)),
        (name["LinearRegression"], lambda: q.linear_regression(x, y), x, y),
        (name["LinearRegression"], lambda: q.linear_regression(x[:1], y[:1]), x[:1], y[:1]),
        (name["FilterArray"], lambda: q.filter_array(y, 20, 51), y, 0, last, 20, 51, 2),
        (name["FilterArray"], lambda: q.filter_array(y, 20, 13, 6, first=-5, last=40), y, -5, 40, 20, 13, 6),
        (name["FilterArray"], lambda: q.filter_array(y, 11, 9, first=590), y, 590, last, 11, 9, 2),
        (name["FilterArray"], lambda: q.filter_array(y[:7], 10, 99), y[:7], 0, 6, 10, 99, 2),
        (name["FilterArray"], lambda: q.filter_array(y, 10, 101), y, 0, last, 10, 101, 2),
        (name["FilterArray"], lambda: q.filter_array(y, 10, 8), y, 0, last, 10, 8, 2),
        (name["FilterArray"], lambda: q.filter_array(y, 0, 5), y, 0, last, 0, 5, 2),
        (name["FilterArray"], lambda: q.filter_array(y, 20, 5, 5), y, 0, last, 20, 5, 5),
        (name["FilterArray"], lambda: q.filter_array(y, 10, 5, first=9, last=3), y, 9, 3, 10, 5, 2),
        (name["FilterArray"], lambda: q.filter_array(y[:1], 10, 5), y[:1], 0, 0, 10, 5, 2),
        (name["FilterArray"], lambda: q.filter_array(np.where(x == 3, np.nan, y).astype(t), 20, 7),
         np.where(x == 3, np.nan, y).astype(t), 0, last, 20, 7, 2),
        *[(name["DerivArray"], lambda m=method, o=order, sp=span: q.deriv_array(x, y, m, o, sp), x, y, method, order,
           span) for method, order, span in ((4, 1, 0), (4, 2, 0), (2, 1, 5), (2, 2, 8), (2, 1, 1), (7, 1, 5),
                                             (2, 3, 5))],
        (name["DerivArray"], lambda: q.deriv_array(x[:1], y[:1], 4), x[:1], y[:1], 4, 1, 0),
        (name["DerivArray"], lambda: q.deriv_array(x[:3], y[:3], 2, 2, 4), x[:3], y[:3], 2, 2, 4),
    ]
    return [pytest.param(call, n, args, id=f"{n}-{k}") for k, (n, call, *args) in enumerate(cases)]


@pytest.mark.parametrize("t", [np.float32, np.float64], ids=["float32", "float64"])
def test_twins_match_the_library(oracle, sample_curve, t):
    x, y = (v.astype(t) for v in sample_curve)
    for param in twin_rows(t, x, y):
        call, name, args = param.values
        check(oracle, call, name, args)


@pytest.mark.parametrize("kind", [q.EXTREMUM_MAX, q.EXTREMUM_MIN])
def test_curve_analyses_match_the_library_on_the_sample_curve(oracle, sample_curve, kind):
    x, y = sample_curve
    for name, function in (("QAL_GetNextExtremum", q.get_next_extremum), ("QAL_GetRangeExtremum",
                           q.get_range_extremum), ("QAL_GetAutoRangeExtremum", q.get_auto_range_extremum)):
        for window, use_vertex in ((15, 1), (30, 0), (600, 1)):
            check(oracle, lambda: function(x, y, window, kind, use_vertex, 2.0), name,
                  (x, y, window, kind, use_vertex, f32(2)))
    check(oracle, lambda: q.get_auto_extremum(x, y, kind), "QAL_GetAutoExtremum", (x, y, kind, 1, f32(0)))
    for threshold_kind in (1, 2, 3, 4, 5):
        for direction in (0, 1, 2):
            check(oracle, lambda: q.find_x_at_y_threshold(x, y, 40.0, threshold_kind, direction, 2, 50.0),
                  "QAL_FindX_at_YThreshold", (x, y, threshold_kind, direction, 2, f32(40), f32(50)))
    for window, height in ((9, 0.0), (30, 5.0), (599, 1.0)):
        check(oracle, lambda: q.find_extrema(x, y, window, height), "qal::findExtrema", (x, y, window, f32(height)))
    check(oracle, lambda: q.find_extrema(x[:2], y[:2], 3), "qal::findExtrema", (x[:2], y[:2], 3, f32(0)))
    for level in (50.0, y[40], 1000.0):
        check(oracle, lambda: q.find_level_crossings(x, y, level), "qal::findLevelCrossings", (x, y, f32(level)))
    check(oracle, lambda: q.first_derivative_golay(x, y, 32.1), "QAL_FirstDerivativeGolay", (x, y, 32.1))
    check(oracle, lambda: q.first_derivative_lin_reg(x, y, 9, 104.3), "QAL_FirstDerivativeLinReg", (x, y, 9, 104.3))
