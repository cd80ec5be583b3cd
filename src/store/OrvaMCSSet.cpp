#include "store/OrvaMCSSet.h"

#include <cassert>

#include "support/memory/LumoMemoryManager.h"

OrvaMCSSet::OrvaMCSSet(OrvaMCSManager* manager, OrvaMCSNode* root)
    : _manager(manager), _root(root) {
  LumoMemoryManager::TraceNew(this, "OrvaMCSSet");
}

OrvaMCSSet::~OrvaMCSSet() { LumoMemoryManager::TraceDelete(this, "OrvaMCSSet"); }

void OrvaMCSSet::SetRootNode(OrvaMCSNode* root) {
  if (root == _root) return;
  assert(root == nullptr || root->GetParent() == nullptr);
  _manager->FreeTree(_root);
  _root = root;
  _numberOfTreeChanges = NEVER_COMPILED;  // there may have been nothing to free
}

// Compiles the tree unless it is, as it is now.
OrvaMCSProgram& OrvaMCSSet::_GetProgram() {
  const std::uint64_t changes = _manager->GetNumberOfTreeChanges();
  if (_numberOfTreeChanges != changes) _program.Compile(*_manager, _root);
  _numberOfTreeChanges = changes;
  return _program;
}

double OrvaMCSSet::UpdateTopEventProbability() {
  return _SetTopEventProbability(_GetProgram().ComputeSum(*_manager));
}

double OrvaMCSSet::_SetTopEventProbability(double sum) {
  _topEventProbability = sum;
  if (_topEventProbability < 0.0) _topEventProbability = 0.0;
  if (_topEventProbability > 1.0) _topEventProbability = 1.0;
  return _topEventProbability;
}

void OrvaMCSSet::CreateBasicEventTable() {
  const auto size = static_cast<std::size_t>(_manager->GetIndexOfHighestEntry()) + 1;
  if (size > _basicEvents.size()) _basicEvents.resize(size);
}

const OrvaMCSBasicEvent* OrvaMCSSet::GetBasicEvent(int index) const {
  if (index < 0 || index > GetHighestBasicEventIndex()) return nullptr;
  return &_basicEvents[static_cast<std::size_t>(index)];
}

void OrvaMCSSet::UpdateBasicEventIndicators(int index) {
  assert(index >= 0 && index <= GetHighestBasicEventIndex());
  _basicEvents[static_cast<std::size_t>(index)] = {_manager->GetProbability(index), 0.0, 0};
}

void OrvaMCSSet::UpdateBasicEventsIndicators() {
  CreateBasicEventTable();
  for (int i = 0; i <= GetHighestBasicEventIndex(); ++i) UpdateBasicEventIndicators(i);
}

double OrvaMCSSet::UpdateMarginalImportanceFactors() {
  UpdateBasicEventsIndicators();
  OrvaMCSProgram& program = _GetProgram();
  const double sum = program.ComputeSumAndDerivatives(*_manager);
  for (std::size_t i = 0; i < program.GetNumberOfEvents(); ++i) {
    OrvaMCSBasicEvent& event = _basicEvents[static_cast<std::size_t>(program.GetIndexOfEvent(i))];
    event.marginalImportanceFactor = program.GetDerivative(i);
    event.numberOfOccurrences = program.GetNumberOfOccurrences(i);
  }
  return _SetTopEventProbability(sum);
}

// Offered to users of the class; the program itself does not call what follows.

OrvaMCSSet* OrvaMCSSet::Copy() const { return new OrvaMCSSet(_manager, _manager->CopyTree(_root)); }

void OrvaMCSSet::CollectMinimalCutsets(LumoContainer* result) const {
  if (_root != nullptr) _root->CollectMinimalCutsets(result);
}

void OrvaMCSSet::DeleteBasicEventTable() { _basicEvents.clear(); }
