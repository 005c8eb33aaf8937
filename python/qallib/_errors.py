"""The exceptions that stand for the library's status codes.

Every status but QAL_OK raises a subclass of QalError. Each subclass also derives from the
built-in exception that a Python user would reach for, so that ordinary except clauses
catch it:

=====================  ===========================  ===========================
status                 exception                    also a
=====================  ===========================  ===========================
1  QAL_ERR_ORDER          OrderError                ValueError
8  QAL_ERR_MEMORY         AllocationError           MemoryError
11 QAL_ERR_ZERO_DIVISION  ZeroDenominatorError      ZeroDivisionError
12 QAL_ERR_SINGULAR       SingularMatrixError       ArithmeticError
35 QAL_ERR_PARAMETER      ParameterError            ValueError
36 QAL_ERR_NOT_FOUND      NotFoundError             LookupError
37 QAL_ERR_OUT_OF_RANGE   OutOfRangeError           ValueError
38 QAL_ERR_TOO_FEW_POINTS TooFewPointsError         ValueError
39 QAL_ERR_LOG_SEQUENCE   LogSequenceError          ValueError
=====================  ===========================  ===========================

AllocationError is raised only when the library could not allocate its work memory: the
few routines that give QAL_ERR_MEMORY also for too short an array are guarded by a
ValueError before the call. ZeroDenominatorError is not named ZeroDivisionError so as not
to shadow the built-in it derives from.
"""


class QalError(Exception):
    """A status other than QAL_OK.

    Attributes:
        status: the status code (an int).
        function: the qallib function that raised.
        outputs: what the routine left in its outputs, in the form the function returns on
            success (a Point, a float, an array, ...), or None when nothing useful stands
            there. For example a search that finds nothing leaves its start or far-end
            sample, and interpol the midpoint of the curve.
    """

    status = -1
    name = "QAL_ERR"
    meaning = "a status other than QAL_OK"

    def __init__(self, status, function, outputs=None):
        self.status = status
        self.function = function
        self.outputs = outputs
        name = self.name if status == type(self).status else "status"
        super().__init__(f"{function}: {name} ({status}): {self.meaning}")

    def __reduce__(self):
        return (type(self), (self.status, self.function, self.outputs))


class OrderError(QalError, ValueError):
    """QAL_ERR_ORDER: the abscissae do not ascend."""

    status, name, meaning = 1, "QAL_ERR_ORDER", "the abscissae do not ascend"


class AllocationError(QalError, MemoryError):
    """QAL_ERR_MEMORY: a work array could not be allocated."""

    status, name, meaning = 8, "QAL_ERR_MEMORY", "a work array could not be allocated"


class ZeroDenominatorError(QalError, ZeroDivisionError):
    """QAL_ERR_ZERO_DIVISION: a denominator or an interval width is numerically zero."""

    status, name, meaning = 11, "QAL_ERR_ZERO_DIVISION", "a denominator or interval width is numerically zero"


class SingularMatrixError(QalError, ArithmeticError):
    """QAL_ERR_SINGULAR: the matrix is singular (gauss_jordan: its status 2, a pivot below 1e-25)."""

    status, name, meaning = 12, "QAL_ERR_SINGULAR", "the matrix is singular"


class ParameterError(QalError, ValueError):
    """QAL_ERR_PARAMETER: an impossible count or option."""

    status, name, meaning = 35, "QAL_ERR_PARAMETER", "an impossible count or option"


class NotFoundError(QalError, LookupError):
    """QAL_ERR_NOT_FOUND: the search ran through the data and found nothing."""

    status, name, meaning = 36, "QAL_ERR_NOT_FOUND", "the search ran through the data and found nothing"


class OutOfRangeError(QalError, ValueError):
    """QAL_ERR_OUT_OF_RANGE: at or beyond the ends of the data, or no finite result."""

    status, name, meaning = 37, "QAL_ERR_OUT_OF_RANGE", "at or beyond the ends of the data, or no finite result"


class TooFewPointsError(QalError, ValueError):
    """QAL_ERR_TOO_FEW_POINTS: fewer points than the operation needs."""

    status, name, meaning = 38, "QAL_ERR_TOO_FEW_POINTS", "fewer points than the operation needs"


class LogSequenceError(QalError, ValueError):
    """QAL_ERR_LOG_SEQUENCE: the logarithms break the demanded order."""

    status, name, meaning = 39, "QAL_ERR_LOG_SEQUENCE", "the logarithms break the demanded order"


ERRORS = {
    cls.status: cls
    for cls in (OrderError, AllocationError, ZeroDenominatorError, SingularMatrixError, ParameterError,
                NotFoundError, OutOfRangeError, TooFewPointsError, LogSequenceError)
}


# Results that are not status codes but stand for one.
_SPECIAL = {("k_qal.gauss_jordan", 2): SingularMatrixError}


def _error_for(status, function, outputs):
    """The exception for a status; the binding raises it."""
    cls = _SPECIAL.get((function, status)) or ERRORS.get(status, QalError)
    return cls(status, function, outputs)
