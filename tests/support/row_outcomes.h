// Table checks for routines that give a result and fill two outputs (a point, or a line's
// intercept and slope). Each row names what it expects as `result`, `first` and `second`.
#ifndef QAL_TESTS_SUPPORT_ROW_OUTCOMES_H
#define QAL_TESTS_SUPPORT_ROW_OUTCOMES_H

#include <cstddef>
#include <vector>

#include "support/same_bits.h"

namespace qal::test {

// The size of a row's array as the int count that the routines take.
template <class T>
int Count(const std::vector<T>& values) { return static_cast<int>(values.size()); }

// Runs `call(row, &first, &second)` for each row on outputs preset to kUntouched, so that a row
// can expect them untouched, and compares the result and both outputs to the bit.
template <class Row, std::size_t N, class Call>
void ExpectRows(const Row (&rows)[N], Call call) {
    for (const Row& r : rows) {
        auto first = static_cast<decltype(r.first)>(kUntouched), second = first;
        EXPECT_EQ(r.result, call(r, &first, &second)) << "row " << &r - rows;
        EXPECT_TRUE(SamePoint(r.first, r.second, first, second)) << "row " << &r - rows;
    }
}

}  // namespace qal::test

#endif  // QAL_TESTS_SUPPORT_ROW_OUTCOMES_H
