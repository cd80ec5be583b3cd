// Modules: their detection by the dates of visits, and the gathering of independent children.
//
// The walks run on stacks of their own: a frame is an event whose formula is being visited, and
// the next node of that formula. Only the references among the nodes matter.

#include <algorithm>
#include <climits>
#include <vector>

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
  struct Frame {
    OrvaModuleRecord* record;
    OrvaGate* definition;
    OrvaTerm* next;
  };
  std::vector<Frame> stack;
  const auto visit = [&](OrvaEvent* event) {
    OrvaModuleRecord* record = _GetModuleRecord(event);
    ++date;
    if (record->IsDated()) return record->SetLastDate(date);
    record->SetFirstDate(date);
    OrvaGate* definition = event->GetDefinition();
    stack.push_back(
        {record, definition, definition == nullptr ? nullptr : definition->GetFirstInPostOrder()});
  };
  visit(top);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == nullptr) {
      ++date;
      frame.record->SetSecondDate(date);
      frame.record->SetLastDate(date);
      stack.pop_back();
      continue;
    }
    OrvaSymbol* reference = frame.next->GetReferencedSymbol();
    frame.next = frame.next->GetNextInPostOrder(frame.definition);
    if (reference != nullptr) visit(static_cast<OrvaEvent*>(reference));
  }
}

// Carries the lowest and the highest dates upward. What an event keeps covers the visits below it
// and its own opening and closing; what it hands to its parents covers its last visit too.
void OrvaRewriter::_SynthesizeModuleDates(OrvaEvent* top, int& low, int& high) {
  struct Frame {
    OrvaModuleRecord* record;
    OrvaGate* definition;
    OrvaTerm* next;
    int low = INT_MAX;
    int high = 0;
  };
  std::vector<Frame> stack;
  // Hands dates to the frame on top, or to the caller below the last one.
  const auto hand = [&](int eventLow, int eventHigh) {
    int& targetLow = stack.empty() ? low : stack.back().low;
    int& targetHigh = stack.empty() ? high : stack.back().high;
    targetLow = std::min(targetLow, eventLow);
    targetHigh = std::max(targetHigh, eventHigh);
  };
  const auto visit = [&](OrvaEvent* event) {
    OrvaModuleRecord* record = _GetModuleRecord(event);
    OrvaGate* definition = event->GetDefinition();
    if (record->IsUpdated()) {
      hand(record->GetLowestDate(), std::max(record->GetHighestDate(), record->GetLastDate()));
    } else if (definition != nullptr) {
      stack.push_back({record, definition, definition->GetFirstInPostOrder()});
    } else {
      record->SetLowestDate(record->GetFirstDate());
      record->SetHighestDate(record->GetSecondDate());
      hand(record->GetFirstDate(), record->GetLastDate());
    }
  };
  visit(top);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == nullptr) {
      OrvaModuleRecord* record = frame.record;
      record->SetLowestDate(std::min(frame.low, record->GetFirstDate()));
      record->SetHighestDate(std::max(frame.high, record->GetSecondDate()));
      stack.pop_back();
      hand(record->GetLowestDate(), std::max(record->GetHighestDate(), record->GetLastDate()));
      continue;
    }
    OrvaSymbol* reference = frame.next->GetReferencedSymbol();
    frame.next = frame.next->GetNextInPostOrder(frame.definition);
    if (reference != nullptr) visit(static_cast<OrvaEvent*>(reference));
  }
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
