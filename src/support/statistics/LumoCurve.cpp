#include "support/statistics/LumoCurve.h"

#include <cassert>
#include <cfloat>
#include <cmath>

#include "support/memory/LumoMemoryManager.h"

namespace {

const LumoCurvePoint* AsPoint(const void* item) { return static_cast<const LumoCurvePoint*>(item); }

// The length of x over which a segment lies within [low, high]. a and b are the offsets at which
// it crosses the two.
double GetSojournOfSegment(double dx, double y0, double y1, double low, double high) {
  const double dy = y1 - y0;
  if (dy == 0.0) return low <= y0 && y0 <= high ? dx : 0.0;
  const double a = (low - y0) * dx / dy;
  const double b = (high - y0) * dx / dy;
  if (y0 < low) {
    if (y1 > high) return std::fabs(b - a);
    return low <= y1 && y1 <= high ? std::fabs(dx - a) : 0.0;
  }
  if (y0 > high) {
    if (y1 < low) return std::fabs(b - a);
    return low <= y1 && y1 <= high ? std::fabs(b - dx) : 0.0;
  }
  if (y1 > high) return std::fabs(b);
  if (y1 < low) return std::fabs(a);
  return dx;
}

double GetYOf(const LumoCurvePoint* point) { return point == nullptr ? 0.0 : point->GetY(); }

}  // namespace

LumoCurvePoint::LumoCurvePoint(double x, double y) : _x(x), _y(y) {
  LumoMemoryManager::TraceNew(this, "LumoCurvePoint");
}

LumoCurvePoint::~LumoCurvePoint() { LumoMemoryManager::TraceDelete(this, "LumoCurvePoint"); }

void LumoCurvePoint::Delete(void* point) {
  if (point != nullptr) delete static_cast<LumoCurvePoint*>(point);
}

int LumoCurvePoint::CompareX(const void* point, const void* x) {
  return AsPoint(point)->CompareX(*static_cast<const double*>(x));
}

int LumoCurvePoint::CompareXs(const void* a, const void* b) {
  return AsPoint(a)->CompareXs(AsPoint(b));
}

// Offered to users of the class; the program itself does not call what follows.

int LumoCurvePoint::CompareY(const void* point, const void* y) {
  return AsPoint(point)->CompareY(*static_cast<const double*>(y));
}

int LumoCurvePoint::CompareYs(const void* a, const void* b) {
  return AsPoint(a)->CompareYs(AsPoint(b));
}

LumoCurve::LumoCurve() : _points(LumoCurvePoint::CompareXs) {
  LumoMemoryManager::TraceNew(this, "LumoCurve");
}

LumoCurve::~LumoCurve() {
  Reset();
  LumoMemoryManager::TraceDelete(this, "LumoCurve");
}

LumoCurvePoint* LumoCurve::NewPoint(double x, double y) {
  LumoCurvePoint* point = LookForPointAtX(x);
  if (point != nullptr) {
    point->SetY(y);
  } else {
    point = new LumoCurvePoint(x, y);
    _points.InsertItem(point);
  }
  return point;
}

LumoCurvePoint* LumoCurve::LookForPointAtX(double x) const {
  return static_cast<LumoCurvePoint*>(_points.LookForItem(LumoCurvePoint::CompareX, &x));
}

LumoCurvePoint* LumoCurve::GetFirstPoint() const {
  return static_cast<LumoCurvePoint*>(_points.GetFirstItem());
}

LumoCurvePoint* LumoCurve::GetLastPoint() const {
  return static_cast<LumoCurvePoint*>(_points.GetLastItem());
}

double LumoCurve::GetFirstX(double defaultValue) const {
  const LumoCurvePoint* point = GetFirstPoint();
  return point == nullptr ? defaultValue : point->GetX();
}

double LumoCurve::GetLastX(double defaultValue) const {
  const LumoCurvePoint* point = GetLastPoint();
  return point == nullptr ? defaultValue : point->GetX();
}

template <class Visit>
void LumoCurve::_ForEachSegment(Visit visit) const {
  const LumoCurvePoint* previous = nullptr;
  for (const LumoCurvePoint* point : LumoItems<LumoCurvePoint>(_points)) {
    assert(previous == nullptr || previous->GetX() < point->GetX());
    if (previous != nullptr) visit(previous, point);
    previous = point;
  }
}

double LumoCurve::GetIntegral() const {
  double integral = 0.0;
  _ForEachSegment([&](const LumoCurvePoint* from, const LumoCurvePoint* to) {
    integral += (to->GetY() + from->GetY()) * (to->GetX() - from->GetX()) * 0.5;
  });
  return integral;
}

double LumoCurve::GetXSojournBetweenYValues(double low, double high) const {
  double sojourn = 0.0;
  _ForEachSegment([&](const LumoCurvePoint* from, const LumoCurvePoint* to) {
    sojourn += GetSojournOfSegment(to->GetX() - from->GetX(), from->GetY(), to->GetY(), low, high);
  });
  return sojourn;
}

// Offered to users of the class; the program itself does not call what follows.

void LumoCurve::DeletePoint(LumoCurvePoint* point) {
  LumoCurvePoint::Delete(_points.RemoveItem(point));
}

LumoCurvePoint* LumoCurve::GetPointWithMaximumY() const {
  LumoCurvePoint* maximum = nullptr;
  double y = DBL_MIN;
  for (LumoCurvePoint* point : LumoItems<LumoCurvePoint>(_points)) {
    if (point->GetY() > y) {
      maximum = point;
      y = point->GetY();
    }
  }
  return maximum;
}

LumoCurvePoint* LumoCurve::GetPointWithMinimumY() const {
  LumoCurvePoint* minimum = nullptr;
  double y = DBL_MAX;
  for (LumoCurvePoint* point : LumoItems<LumoCurvePoint>(_points)) {
    if (point->GetY() < y) {
      minimum = point;
      y = point->GetY();
    }
  }
  return minimum;
}

double LumoCurve::GetMaximumY() const { return GetYOf(GetPointWithMaximumY()); }

double LumoCurve::GetMinimumY() const { return GetYOf(GetPointWithMinimumY()); }

double LumoCurve::GetMeanY() const {
  if (GetNumberOfPoints() < 2) return GetYOf(GetFirstPoint());
  return GetIntegral() / (GetLastX(0.0) - GetFirstX(0.0));
}
