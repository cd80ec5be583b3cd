// Modules: their detection by the dates of visits, and the gathering of independent children.
//
// A gate is a module when no event below it is also reached from outside. To ask this gate by gate
// would take the product of gates and events. One depth-first walk from the top answers it for all
// gates: its clock ticks at each visit, and each event notes when it was first met, when the walk
// came back from below it, and when it was met last. Everything that happens inside a gate's
// formula happens between its first two dates. So a gate is a module exactly when no event below it
// has an earlier or a later date than these: had such an event been reached from outside, it would
// have been met before the gate was opened or after it was closed. A second walk carries the lowest
// and highest dates upward.
//
// Several independent children of a gate that is no module become a module when they are gathered
// in a gate of their own; a second detection then dates the new gates with the others.

#include <algorithm>
#include <cassert>
#include <climits>
#include <vector>

#include "model/OrvaDefinitionWalk.h"
#include "model/OrvaModel.h"
#include "system/OrvaModuleRecord.h"
#include "system/OrvaRewriter.h"

OrvaModuleRecord* OrvaRewriter::_GetModuleRecord(OrvaEvent* event) {
  return OrvaModuleRecord::FindOrAttach(event);
}

void OrvaRewriter::DetectModules(OrvaModel* /*model*/, OrvaEvent* top) {
  LumoList events;
  top->CollectDescendants(OrvaSymbol::CompareAsAnySymbol, nullptr, &events);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) _GetModuleRecord(event)->Reset();
  int date = 0;
  _InheritModuleDates(top, date);
  int low = INT_MAX;
  int high = 0;
  _SynthesizeModuleDates(top, low, high);
  assert(_GetModuleRecord(top)->IsModule());  // nothing lies outside the top
}

// Stamps every visit. The first opens an event and closes it after the visits below; each further
// one moves the last date.
void OrvaRewriter::_InheritModuleDates(OrvaEvent* top, int& date) {
  std::vector<OrvaModuleRecord*> open;
  const auto enter = [&](OrvaEvent* event) {
    OrvaModuleRecord* record = _GetModuleRecord(event);
    ++date;
    if (record->IsDated()) {
      record->SetLastDate(date);
      return false;
    }
    record->SetFirstDate(date);
    open.push_back(record);
    return true;
  };
  const auto leave = [&](OrvaEvent* /*event*/) {
    ++date;
    assert(open.back()->GetFirstDate() < date);
    open.back()->SetSecondDate(date);
    open.back()->SetLastDate(date);
    open.pop_back();
  };
  OrvaDefinitionWalk().Visit(top, enter, leave);
}

// Carries the lowest and the highest dates upward. What an event keeps covers the visits below it
// and its own opening and closing; what it hands to its parents covers its last visit too.
void OrvaRewriter::_SynthesizeModuleDates(OrvaEvent* top, int& low, int& high) {
  struct Dates {
    OrvaModuleRecord* record;
    int low = INT_MAX;
    int high = 0;
  };
  std::vector<Dates> open;
  // Hands dates to the last event that is open, or to the caller above the first one.
  const auto handUp = [&](const OrvaModuleRecord* record) {
    int& targetLow = open.empty() ? low : open.back().low;
    int& targetHigh = open.empty() ? high : open.back().high;
    targetLow = std::min(targetLow, record->GetLowestDate());
    targetHigh = std::max({targetHigh, record->GetHighestDate(), record->GetLastDate()});
  };
  const auto enter = [&](OrvaEvent* event) {
    OrvaModuleRecord* record = _GetModuleRecord(event);
    assert(record->IsDated() && record->GetSecondDate() <= record->GetLastDate());
    if (!record->IsUpdated()) {
      open.push_back({record});
      return true;
    }
    handUp(record);
    return false;
  };
  const auto leave = [&](OrvaEvent* /*event*/) {
    const Dates dates = open.back();
    open.pop_back();
    dates.record->SetLowestDate(std::min(dates.low, dates.record->GetFirstDate()));
    dates.record->SetHighestDate(std::max(dates.high, dates.record->GetSecondDate()));
    assert(dates.record->IsUpdated());
    handUp(dates.record);
  };
  OrvaDefinitionWalk().Visit(top, enter, leave);
}

void OrvaRewriter::Modularize(OrvaModel* model, OrvaEvent* top) {
  DetectModules(model, top);
  LumoList events;
  top->CollectDescendants(OrvaSymbol::CompareAsAnySymbol, nullptr, &events);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
    if (event->GetType() == OrvaEvent::GATE && event->GetDefinition() != nullptr &&
        !_IsModule(event)) {
      _GatherModules(model, event->GetDefinition());
    }
  }
  DetectModules(model, top);
}

bool OrvaRewriter::_IsModularizable(const OrvaEvent* event) const {
  return event->GetNumberOfOccurrences() == 1 && _IsModule(event);
}

bool OrvaRewriter::_IsModularizable(const OrvaGate* gate) const {
  if (gate->IsEvent()) return _IsModularizable(gate->GetReferencedEvent());
  const OrvaGate* child = gate->GetFirstChild();
  while (child != nullptr && _IsModularizable(child)) child = child->GetNextSibling();
  return child == nullptr;
}

// Two modularizable children or more move to a new gate of the same operator, also for NAND and
// NOR.
void OrvaRewriter::_GatherModules(OrvaModel* model, OrvaGate* gate) {
  switch (gate->GetType()) {
    case OrvaGate::AND:
    case OrvaGate::OR:
    case OrvaGate::NAND:
    case OrvaGate::NOR:
      break;
    default:
      return;
  }
  LumoList modules;
  for (OrvaGate* child = gate->GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
    if (_IsModularizable(child)) modules.InsertItemLast(child);
  }
  if (modules.GetNumberOfItems() < 2) return;
  OrvaEvent* event = GenerateGate(model);
  assert(event->GetDefinition() == nullptr);
  OrvaGate* inner = OrvaGate::NewOperator(model, gate->GetType(), &modules);
  gate->AddChild(OrvaGate::NewEvent(model, event));
  event->SetDefinition(inner);
  assert(event->GetNumberOfOccurrences() == 1);
}
