// Two threads, one behind the other.
#pragma once

#include <functional>

namespace cfa {

/// Steps that the front may be ahead of the back.
constexpr int FRONT_LEAD = 16;

/// Calls front(t) and back(t) for all steps 0 to steps - 1, each of the two in order: back(t) behind
/// front(t), front(t + FRONT_LEAD) not before back(t) has begun. They run at the same time on two threads, or
/// in turn where the system has no second one. The first error of either ends both and is thrown.
void run_side_by_side(int steps, const std::function<void(int)> &front, const std::function<void(int)> &back);

/// How many processors the process may use; 1 where more threads are running now than there are, for then a
/// second one of ours only adds changes from one to the other.
int free_processors();

} // namespace cfa
