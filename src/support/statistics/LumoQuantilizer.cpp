// Collapsing buffers. The sample fills buffer after buffer, each sorted when it is full; a value in
// a buffer of weight w stands for w sampled ones. When no buffer is left empty, those of the lowest
// level, the rightmost, are merged and thinned out into one of the next level, which weighs as much
// as they did together. The levels thus fall from left to right, and the last empty buffer joins
// the lowest level in use, so that there are always two buffers to collapse.
//
// Why the lowest level: a collapse is wrong by up to half its output's weight in the rank of any
// value, and those errors add up. Collapsing light buffers, and as many as there are, keeps the sum
// of the weights of all outputs small, and with it the bound of the header.
//
// Why the offset alternates: a value kept should be the middle one of the W that it stands for, and
// an even W has two middles. Always taking the lower one would push every quantile down a little at
// each level; taken in turn, the two errors cancel.

#include "support/statistics/LumoQuantilizer.h"

#include <algorithm>
#include <cassert>

#include "support/memory/LumoMemoryManager.h"

LumoQuantilizer::LumoQuantilizer(int numberOfBuffers, int sizeOfBuffers)
    : _numberOfBuffers(std::max(numberOfBuffers, 2)), _sizeOfBuffers(std::max(sizeOfBuffers, 1)) {
  for (int i = 0; i <= _numberOfBuffers; ++i) {
    _buffers.push_back(std::make_unique<LumoQuantileTable>(_sizeOfBuffers));
  }
  LumoMemoryManager::TraceNew(this, "LumoQuantilizer");
}

LumoQuantilizer::~LumoQuantilizer() { LumoMemoryManager::TraceDelete(this, "LumoQuantilizer"); }

void LumoQuantilizer::Reset() {
  for (auto& buffer : _buffers) buffer->Reset();
  _currentBuffer = 1;
  _roundsUp = false;
}

void LumoQuantilizer::AddValue(double x) {
  if (_currentBuffer > _numberOfBuffers) CollapseRightBuffers();
  assert(_currentBuffer >= 1 && _currentBuffer <= _numberOfBuffers);
  LumoQuantileTable* buffer = _GetBuffer(_currentBuffer);
  if (buffer->GetNumberOfValues() == 0) _StartBuffer(buffer);
  buffer->AddValue(x);
  if (buffer->IsFull()) {
    buffer->SortValues();
    ++_currentBuffer;
  }
}

// The last empty buffer joins the lowest level in use, so that there are always two to collapse.
void LumoQuantilizer::_StartBuffer(LumoQuantileTable* buffer) {
  const bool isLast = _currentBuffer == _numberOfBuffers;
  assert(!isLast || _currentBuffer > 1);
  buffer->SetWeight(1);
  buffer->SetLevel(isLast ? _GetBuffer(_currentBuffer - 1)->GetLevel() : 0);
}

void LumoQuantilizer::CollapseRightBuffers() {
  const int level = _GetBuffer(_numberOfBuffers)->GetLevel();
  int first = _numberOfBuffers;
  while (first > 1 && _GetBuffer(first - 1)->GetLevel() == level) --first;
  assert(first == 1 || _GetBuffer(first - 1)->GetLevel() > level);
  CollapseBuffers(first, _numberOfBuffers);
  _GetBuffer(0)->SetLevel(level + 1);
  _buffers[0].swap(_buffers[static_cast<std::size_t>(first)]);
  for (int i = first + 1; i <= _numberOfBuffers; ++i) _GetBuffer(i)->Reset();
  _currentBuffer = first + 1;
}

int LumoQuantilizer::GetBufferWithMinimumTopValue(int first, int last) const {
  assert(first >= 1 && last <= _numberOfBuffers);
  int minimum = 0;
  for (int i = first; i <= last; ++i) {
    const LumoQuantileTable* buffer = _GetBuffer(i);
    if (!buffer->HasTop()) continue;
    if (minimum == 0 || buffer->GetTopValue() < _GetBuffer(minimum)->GetTopValue()) minimum = i;
  }
  return minimum;
}

template <class Visitor>
void LumoQuantilizer::_MergeBuffers(int first, int last, Visitor visit) {
  for (int i = first; i <= last; ++i) _GetBuffer(i)->ResetTop();
  while (const int i = GetBufferWithMinimumTopValue(first, last)) {
    LumoQuantileTable* buffer = _GetBuffer(i);
    visit(buffer->GetTopValue(), buffer->GetWeight());
    buffer->PopTop();
  }
}

long LumoQuantilizer::_GetWeightOfBuffers(int first, int last) const {
  long weight = 0;
  for (int i = first; i <= last; ++i) {
    assert(_GetBuffer(i)->GetWeight() >= 1);
    weight += _GetBuffer(i)->GetWeight() * _GetBuffer(i)->GetNumberOfValues();
  }
  return weight;
}

// Full buffers of total weight k W give the values of the ranks j W + offset, j = 0 .. k - 1, the
// offset being the middle of 1 .. W.
void LumoQuantilizer::CollapseBuffers(int first, int last) {
  LumoQuantileTable* target = _GetBuffer(0);
  target->Reset();
  const long weight =
      std::max(_GetWeightOfBuffers(first, last) / target->GetNumberOfQuantiles(), 1L);
  long offset = (weight + 1) / 2;
  if (weight % 2 == 0) {
    offset += static_cast<long>(_roundsUp);
    _roundsUp = !_roundsUp;
  }
  target->SetWeight(weight);
  long rank = 0;
  _MergeBuffers(first, last, [&](double value, long valueWeight) {
    rank += valueWeight;
    while (!target->IsFull() && target->GetNumberOfValues() * weight + offset <= rank) {
      target->AddValue(value);
    }
  });
}

int LumoQuantilizer::_CloseBuffers() {
  if (_currentBuffer > _numberOfBuffers) return _numberOfBuffers;
  _GetBuffer(_currentBuffer)->SortValues();
  return _currentBuffer;
}

LumoQuantileTable* LumoQuantilizer::ExtractQuantiles(int n) {
  auto* quantiles = new LumoQuantileTable(n);
  const int last = _CloseBuffers();
  const long total = _GetWeightOfBuffers(1, last);
  long rank = 0;
  _MergeBuffers(1, last, [&](double value, long weight) {
    rank += weight;
    // Value number i is due from rank ⌈i total / (n + 1)⌉ on, i = 1 .. n.
    while (!quantiles->IsFull() &&
           (quantiles->GetNumberOfValues() + 1L) * total <= rank * (n + 1L)) {
      quantiles->AddValue(value);
    }
  });
  assert(rank == total && (total == 0 || quantiles->IsFull()));
  return quantiles;
}

// Offered to users of the class; the program itself does not call what follows.

LumoQuantilizer* LumoQuantilizer::Copy() const {
  auto* copy = new LumoQuantilizer(_numberOfBuffers, _sizeOfBuffers);
  for (int i = 0; i <= _numberOfBuffers; ++i) {
    const LumoQuantileTable* from = _GetBuffer(i);
    LumoQuantileTable* to = copy->_GetBuffer(i);
    for (int j = 0; j < from->GetNumberOfValues(); ++j) to->AddValue(from->GetQuantile(j));
    to->SetWeight(from->GetWeight());
    to->SetLevel(from->GetLevel());
  }
  copy->_currentBuffer = _currentBuffer;
  copy->_roundsUp = _roundsUp;
  return copy;
}

LumoQuantileTable* LumoQuantilizer::ExtractBins(int n) {
  auto* bins = new LumoQuantileTable(n);
  const int last = _CloseBuffers();
  const double binWeight = static_cast<double>(_GetWeightOfBuffers(1, last)) / n;
  double weight = 0.0;
  double sum = 0.0;
  _MergeBuffers(1, last, [&](double value, long valueWeight) {
    auto rest = static_cast<double>(valueWeight);
    while (!bins->IsFull() && weight + rest >= binWeight) {
      const double part = binWeight - weight;
      bins->AddValue((sum + part * value) / binWeight);
      rest -= part;
      weight = sum = 0.0;
    }
    weight += rest;
    sum += rest * value;
  });
  // Rounding may leave the last bin a hair short of its weight.
  if (weight > 0.0 && bins->GetNumberOfValues() == n - 1) bins->AddValue(sum / weight);
  return bins;
}

LumoQuantileTable* LumoQuantilizer::ExtractDistribution(double low, double high, int n) {
  const std::unique_ptr<LumoQuantileTable> cumulative(ExtractCumulativeDistribution(low, high, n));
  const double below = [&] {
    const std::unique_ptr<LumoQuantileTable> start(ExtractCumulativeDistribution(low, low, 1));
    return start->GetQuantile(0);
  }();
  auto* distribution = new LumoQuantileTable(n);
  for (int i = 0; i < cumulative->GetNumberOfValues(); ++i) {
    distribution->AddValue(cumulative->GetQuantile(i) -
                           (i == 0 ? below : cumulative->GetQuantile(i - 1)));
  }
  return distribution;
}

LumoQuantileTable* LumoQuantilizer::ExtractCumulativeDistribution(double low, double high, int n) {
  auto* distribution = new LumoQuantileTable(n);
  const int last = _CloseBuffers();
  const auto total = static_cast<double>(_GetWeightOfBuffers(1, last));
  if (total == 0.0) return distribution;
  const auto upperEnd = [&](int i) { return low + (high - low) * (i + 1) / n; };
  long rank = 0;
  const auto closeInterval = [&] { distribution->AddValue(static_cast<double>(rank) / total); };
  _MergeBuffers(1, last, [&](double value, long weight) {
    while (!distribution->IsFull() && value >= upperEnd(distribution->GetNumberOfValues())) {
      closeInterval();
    }
    rank += weight;
  });
  while (!distribution->IsFull()) closeInterval();
  return distribution;
}

long LumoQuantilizer::GetSizeInBytes() const {
  return static_cast<long>(_numberOfBuffers + 1) * _sizeOfBuffers *
         static_cast<long>(sizeof(double));
}
