// The index that a container access raises, for table rows that expect one.
#ifndef QAL_TESTS_SUPPORT_RAISED_INDEX_H
#define QAL_TESTS_SUPPORT_RAISED_INDEX_H

#include <climits>

#include "qal/qal_classes.h"

namespace qal::test {

inline constexpr int kNoRaise = INT_MIN;  // "nothing raised"; no row uses INT_MIN as an index

template <class Call>
int RaisedIndex(Call call) {
    try { call(); } catch (const k_QalExceptionIndex& e) { return e.m_index; }
    return kNoRaise;
}

}  // namespace qal::test

#endif  // QAL_TESTS_SUPPORT_RAISED_INDEX_H
