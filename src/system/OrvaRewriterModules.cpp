// Modules: their detection by the dates of visits, and the gathering of independent children.
//
// The walks run on stacks of their own: a frame is an event whose formula is being visited, and
// the next node of that formula. Only the references among the nodes matter.

#include <algorithm>
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
  OrvaGate* inner = OrvaGate::NewOperator(model, gate->GetType(), &modules);
  gate->AddChild(OrvaGate::NewEvent(model, event));
  event->SetDefinition(inner);
}
