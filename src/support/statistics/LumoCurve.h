#pragma once

#include "support/containers/LumoAVLTree.h"
#include "support/containers/LumoRange.h"

// A point of a curve: a value y at a date x.
class LumoCurvePoint {
 public:
  LumoCurvePoint(double x, double y);
  ~LumoCurvePoint();
  LumoCurvePoint(const LumoCurvePoint&) = delete;
  LumoCurvePoint& operator=(const LumoCurvePoint&) = delete;
  static void Delete(void* point);

  double GetX() const { return _x; }
  double GetY() const { return _y; }
  void SetY(double y) { _y = y; }

  // -1, 0 or 1.
  int CompareX(double x) const { return _Compare(_x, x); }
  int CompareXs(const LumoCurvePoint* other) const { return CompareX(other->_x); }
  static int CompareX(const void* point, const void* x);
  static int CompareXs(const void* a, const void* b);

  // Offered to users of the class; the program itself does not call what follows.

  // A new point, the caller's.
  LumoCurvePoint* Copy() const { return new LumoCurvePoint(_x, _y); }
  // Not while the point is in a curve, which is ordered by x.
  void SetX(double x) { _x = x; }
  int CompareY(double y) const { return _Compare(_y, y); }
  int CompareYs(const LumoCurvePoint* other) const { return CompareY(other->_y); }
  static int CompareY(const void* point, const void* y);
  static int CompareYs(const void* a, const void* b);

 private:
  static int _Compare(double a, double b) {
    return static_cast<int>(a > b) - static_cast<int>(a < b);
  }

  double _x;
  double _y;
};

// A function of the date, known at points and taken as linear between them. The curve owns its
// points, of which there is at most one per x.
class LumoCurve {
 public:
  LumoCurve();
  ~LumoCurve();
  LumoCurve(const LumoCurve&) = delete;
  LumoCurve& operator=(const LumoCurve&) = delete;

  // The point at exactly x, whose y is replaced, or a new one.
  LumoCurvePoint* NewPoint(double x, double y);
  // Null when there is none at exactly x.
  LumoCurvePoint* LookForPointAtX(double x) const;
  // Deletes all points.
  void Reset() { _points.DeleteItems(LumoCurvePoint::Delete); }

  int GetNumberOfPoints() const { return _points.GetNumberOfItems(); }
  // By increasing x. The cursor is the caller's; points may be added while it walks.
  LumoCursor* NewCursorOnPoints() { return _points.NewCursor(); }
  const LumoAVLTree* GetPoints() const { return &_points; }
  // Null for an empty curve.
  LumoCurvePoint* GetFirstPoint() const;
  LumoCurvePoint* GetLastPoint() const;
  double GetFirstX(double defaultValue) const;
  double GetLastX(double defaultValue) const;

  // The trapezoid sum over the points; 0 for fewer than two.
  double GetIntegral() const;
  // The total length of x over which the curve lies within [low, high].
  double GetXSojournBetweenYValues(double low, double high) const;

  // Offered to users of the class; the program itself does not call what follows.

  void DeletePoint(LumoCurvePoint* point);
  void CollectPoints(LumoList* result) const { _points.CollectItems(result); }
  // The first point with the largest (smallest) y. The search starts from the smallest positive
  // (the largest) double, so that a curve that never exceeds it has no such point: null.
  LumoCurvePoint* GetPointWithMaximumY() const;
  LumoCurvePoint* GetPointWithMinimumY() const;
  // The y of these points, 0 without one.
  double GetMaximumY() const;
  double GetMinimumY() const;
  // The integral over the span of x; the y of a single point, 0 for an empty curve.
  double GetMeanY() const;

 private:
  template <class Visit>
  void _ForEachSegment(Visit visit) const;

  LumoAVLTree _points;
};
