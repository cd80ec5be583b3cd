#pragma once

#include <memory>
#include <vector>

#include "support/statistics/LumoQuantileTable.h"

// Approximate quantiles of a sample of any length from a bounded memory.
//
// The method is that of G. S. Manku, S. Rajagopalan and B. G. Lindsay, "Approximate medians and
// other quantiles in one pass and with limited memory", 1998. The sample fills b buffers of k
// values, one after the other; each full buffer is sorted. When none is left empty, the buffers of
// the lowest level, which are the rightmost, collapse into one of the next level: their merged
// values, each counted with its weight w_i, are read at k equally spaced ranks, and the k values
// kept weigh W = Σ w_i each. No weight is ever lost: the weights of all values always add up to
// the length of the sample.
//
// Ranks. The i-th of n quantiles, i = 1 .. n, is the value whose rank in the merged sample of
// length N is ⌈i N / (n + 1)⌉. As long as the sample fits into the buffers (N ≤ b k) that is the
// exact order statistic. Afterwards, a collapse moves the rank of a value by less than its
// output's weight; over all collapses the rank of an extracted value is off by at most
// (Σ W - C - 1) / 2 + max w, where Σ W is the sum of the weights of the outputs of all collapses,
// C their number, and max w the largest weight among the buffers at the end (their Lemma 5).
class LumoQuantilizer {
 public:
  // A number of buffers below 2 counts as 2, a size below 1 as 1.
  LumoQuantilizer(int numberOfBuffers, int sizeOfBuffers);
  ~LumoQuantilizer();
  LumoQuantilizer(const LumoQuantilizer&) = delete;
  LumoQuantilizer& operator=(const LumoQuantilizer&) = delete;

  void Reset();
  void AddValue(double x);

  // The n quantiles, in increasing order, of what was sampled so far: a new table, owned by the
  // caller, all of whose values are in use, or none when nothing was sampled.
  LumoQuantileTable* ExtractQuantiles(int n);

  // Among the buffers first .. last, the index of the one with the smallest unread value; 0 when
  // all have been read.
  int GetBufferWithMinimumTopValue(int first, int last) const;

  // Merges the sorted buffers first .. last into the table in the scratch slot 0: as many values
  // as it has places, at equally spaced ranks (see above).
  void CollapseBuffers(int first, int last);
  // Makes one buffer out of the rightmost ones of the lowest level, freeing at least one.
  void CollapseRightBuffers();

  // Offered to users of the class; the program itself does not call what follows.

  // A new quantilizer with the same contents, owned by the caller.
  LumoQuantilizer* Copy() const;
  // New tables as that of the quantiles. The means of n runs of equal weight of the sorted values.
  LumoQuantileTable* ExtractBins(int n);
  // The share of the values in each of n intervals of equal width over [low, high), and the share
  // of the values below the upper end of each.
  LumoQuantileTable* ExtractDistribution(double low, double high, int n);
  LumoQuantileTable* ExtractCumulativeDistribution(double low, double high, int n);
  int GetNumberOfBuffers() const { return _numberOfBuffers; }
  int GetSizeOfBuffers() const { return _sizeOfBuffers; }
  long GetSizeInBytes() const;

 private:
  LumoQuantileTable* _GetBuffer(int i) const { return _buffers[static_cast<std::size_t>(i)].get(); }
  void _StartBuffer(LumoQuantileTable* buffer);
  // Sorts the buffer being filled and returns the index of the last buffer with values.
  int _CloseBuffers();
  long _GetWeightOfBuffers(int first, int last) const;
  // Calls visit(value, weight) on the values of the buffers first .. last in increasing order.
  template <class Visitor>
  void _MergeBuffers(int first, int last, Visitor visit);

  int _numberOfBuffers;
  int _sizeOfBuffers;
  std::vector<std::unique_ptr<LumoQuantileTable>> _buffers;
  int _currentBuffer = 1;
  bool _roundsUp = false;  // an even weight has two middle ranks: they are taken in turn
};
