// The compiled module qallib._qal. Each family of the library registers its functions from
// its own file; the Python package (qallib/__init__.py) re-exports them with the enums.
#include "binding.h"
#include "qal/version.h"

PYBIND11_MODULE(_qal, m) {
    namespace py = pybind11;
    m.doc() = "The compiled core of qallib; import qallib instead.";
    qalpy::loadTypes();

    // The named values of qal.h; qallib builds its IntEnums from these.
    py::dict constants;
    constants["QAL_OK"] = QAL_OK;
    constants["QAL_ERR_ORDER"] = QAL_ERR_ORDER;
    constants["QAL_ERR_MEMORY"] = QAL_ERR_MEMORY;
    constants["QAL_ERR_ZERO_DIVISION"] = QAL_ERR_ZERO_DIVISION;
    constants["QAL_ERR_SINGULAR"] = QAL_ERR_SINGULAR;
    constants["QAL_ERR_PARAMETER"] = QAL_ERR_PARAMETER;
    constants["QAL_ERR_NOT_FOUND"] = QAL_ERR_NOT_FOUND;
    constants["QAL_ERR_OUT_OF_RANGE"] = QAL_ERR_OUT_OF_RANGE;
    constants["QAL_ERR_TOO_FEW_POINTS"] = QAL_ERR_TOO_FEW_POINTS;
    constants["QAL_ERR_LOG_SEQUENCE"] = QAL_ERR_LOG_SEQUENCE;
    constants["QAL_EXTREMUM_MAX"] = QAL_EXTREMUM_MAX;
    constants["QAL_EXTREMUM_MIN"] = QAL_EXTREMUM_MIN;
    constants["QAL_INTERPOL_LOCATED"] = QAL_INTERPOL_LOCATED;
    constants["QAL_INTERPOL_LINE"] = QAL_INTERPOL_LINE;
    constants["QAL_INTERPOL_MIDPOINT"] = QAL_INTERPOL_MIDPOINT;
    constants["QAL_INTERPOL_SPLINE"] = QAL_INTERPOL_SPLINE;
    constants["QAL_INTERPOL_SEGMENT"] = QAL_INTERPOL_SEGMENT;
    constants["QAL_INTERPOL_LOCAL_LINE"] = QAL_INTERPOL_LOCAL_LINE;
    constants["QAL_INTERPOL_LOG_LINE"] = QAL_INTERPOL_LOG_LINE;
    constants["QAL_INTERPOL_LOG_SEGMENT"] = QAL_INTERPOL_LOG_SEGMENT;
    constants["QAL_FILTER_AVERAGE"] = QAL_FILTER_AVERAGE;
    constants["QAL_FILTER_TRIANGLE"] = QAL_FILTER_TRIANGLE;
    constants["QAL_FILTER_SAVITZKY_GOLAY"] = QAL_FILTER_SAVITZKY_GOLAY;
    constants["QAL_DERIV_LINE_FIT"] = QAL_DERIV_LINE_FIT;
    constants["QAL_DERIV_SPLINE"] = QAL_DERIV_SPLINE;
    m.attr("constants") = constants;
    m.def("version", &qal_version, "qal_version(): the version of the QalLib library compiled into this module.");

    qalpy::registerArith(m);
    qalpy::registerSolversLines(m);
    qalpy::registerInterpolation(m);
    qalpy::registerSmoothing(m);
    qalpy::registerCurves(m);
    qalpy::registerClasses(m);
    qalpy::registerBatch(m);
}
