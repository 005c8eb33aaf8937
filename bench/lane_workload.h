// One workload of the lane benchmarks (lanes_bench.cpp): the plain one-output-at-a-time
// loop, the library call, and the comparison of their outputs after one run of each.
#ifndef QAL_BENCH_LANE_WORKLOAD_H
#define QAL_BENCH_LANE_WORKLOAD_H

#include <functional>
#include <string>
#include <vector>

namespace qal::bench {

struct LaneWorkload {
    std::string name;
    double must, aim;  // the ratios library / plain to hold and to reach
    std::function<void()> plain, library;
    std::function<bool()> sameBits;
};

// The curve searches (curve_lanes_bench.cpp).
std::vector<LaneWorkload> curveLaneWorkloads();

}  // namespace qal::bench

#endif  // QAL_BENCH_LANE_WORKLOAD_H
