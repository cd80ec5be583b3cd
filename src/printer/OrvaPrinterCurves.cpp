// Curves over dates, their averages, and safety integrity levels.
//
// A curve is printed in one walk along its points, with the trapezoid sum carried along, since
// every column is a function of the date, the value and that sum. The two tables differ in one
// point that is not a slip: an average unavailability runs since the first date of the curve, an
// average failure intensity since date 0, where its curve begins. At that date it would be 0 / 0,
// so the first row is written as it is defined, with "0.0" in every field.

#include <cassert>
#include <cmath>
#include <cstddef>

#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterTable.h"
#include "support/statistics/LumoCurve.h"

namespace {

// Where a table stands on its way along a curve: the dates, the value, and the trapezoid sum so
// far.
struct Position {
  double firstDate;
  double date;
  double value;
  double integral;
};

struct Column {
  bool OrvaPrinter::*isOn;
  const char* heading;
  double (*compute)(const Position& position);
};

constexpr Column UNAVAILABILITY_COLUMNS[] = {
    {&OrvaPrinter::printUnavailability, "Pr/PFD", [](const Position& p) { return p.value; }},
    // The average since the first date; at the first date itself, the value.
    {&OrvaPrinter::printAverageUnavailability, "PFDavg",
     [](const Position& p) {
       return p.date == p.firstDate ? p.value : p.integral / (p.date - p.firstDate);
     }},
};

// Averages since date 0: the integral is divided by the date itself.
constexpr Column FAILURE_INTENSITY_COLUMNS[] = {
    {&OrvaPrinter::printConditionalFailureIntensity, "CFI",
     [](const Position& p) { return p.value; }},
    {&OrvaPrinter::printAverageConditionalFailureIntensity, "CFIavg",
     [](const Position& p) { return p.integral / p.date; }},
    {&OrvaPrinter::printUnreliability, "F",
     [](const Position& p) { return 1.0 - std::exp(-p.integral); }},
    {&OrvaPrinter::printProbabilityOfFailurePerHour, "PFH",
     [](const Position& p) { return (1.0 - std::exp(-p.integral)) / p.date; }},
};

// One row per point; `putFirst` writes the fields of the first. A point at the date of the one
// before it has no row and adds nothing.
template <std::size_t N, class PutFirst>
void PrintCurve(const OrvaPrinter* printer, const Column (&columns)[N], const LumoCurve* curve,
                LumoStream* stream, PutFirst putFirst) {
  OrvaPrinterTable table(printer, stream);
  if (curve->GetNumberOfPoints() < 2 && !table.IsInColumns()) return;
  table.PutHeaderOf(printer, "date", columns);
  Position position = {};
  bool isFirst = true;
  for (const LumoCurvePoint* point : LumoItems<LumoCurvePoint>(*curve->GetPoints())) {
    const double x = point->GetX();
    const double y = point->GetY();
    if (isFirst) {
      position = {x, x, y, 0.0};
    } else if (x == position.date) {
      continue;
    } else {
      assert(!(x < position.date));  // points run by increasing dates
      position.integral += (position.value + y) * 0.5 * (x - position.date);
      position.date = x;
      position.value = y;
    }
    table.Put(x);
    for (const Column& column : columns) {
      if (!(printer->*column.isOn)) continue;
      if (isFirst) {
        putFirst(table, column, position);
      } else {
        table.Put(column.compute(position));
      }
    }
    table.EndRow();
    isFirst = false;
  }
}

// The bounds of the levels: the probability of failure on demand in low demand mode, the failure
// intensity otherwise. Each level is ten times below the one before; the outer two are open. By
// this numbering, which is the defined one, level n covers what IEC 61508 calls SIL n + 1.
constexpr int NUMBER_OF_LEVELS = 5;
constexpr double LOW_DEMAND_BOUND = 0.1;
constexpr double HIGH_DEMAND_BOUND = 1e-5;
constexpr double HIGHEST_BOUND = 1.0;
constexpr double LOWEST_BOUND = 0.0;

struct Level {
  double lower;
  double upper;
  double sojourn;
};

}  // namespace

void OrvaPrinter::PrintUnavailability(const LumoCurve* curve, LumoStream* stream) {
  PrintCurve(this, UNAVAILABILITY_COLUMNS, curve, stream,
             [](OrvaPrinterTable& table, const Column& column, const Position& position) {
               table.Put(column.compute(position));
             });
}

void OrvaPrinter::PrintFailureIntensity(const LumoCurve* curve, LumoStream* stream) {
  PrintCurve(this, FAILURE_INTENSITY_COLUMNS, curve, stream,
             [](OrvaPrinterTable& table, const Column&, const Position&) { table.Put("0.0"); });
}

void OrvaPrinter::PrintSafetyIntegrityLevel(bool lowDemand, const LumoCurve* curve,
                                            LumoStream* stream) {
  Level levels[NUMBER_OF_LEVELS];
  double bound = lowDemand ? LOW_DEMAND_BOUND : HIGH_DEMAND_BOUND;
  for (Level& level : levels) {
    level.upper = bound;
    bound *= 0.1;
    level.lower = bound;
  }
  levels[0].upper = HIGHEST_BOUND;
  levels[NUMBER_OF_LEVELS - 1].lower = LOWEST_BOUND;
  double total = 0.0;
  for (Level& level : levels) {
    level.sojourn = curve->GetXSojournBetweenYValues(level.lower, level.upper);
    total += level.sojourn;
  }
  {
    OrvaPrinterTable table(this, stream, "levels");
    table.PutHeader("SIL", "lower-bound", "upper-bound", "sojourn-time", "ratio");
    int number = 0;
    for (const Level& level : levels) {
      table.PutRow(number++, level.lower, level.upper, level.sojourn, level.sojourn / total);
    }
  }
  OrvaPrinterTable table(this, stream, "average");
  table.PutRecord(
      {{"average", curve->GetIntegral() / (curve->GetLastX(-1.0) - curve->GetFirstX(-1.0))}});
}
