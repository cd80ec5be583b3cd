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
}

double OrvaMCSSet::UpdateTopEventProbability() {
  ComputeSumOfMinimalCutsetProbabilities(_topEventProbability);
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

void OrvaMCSSet::UpdateMarginalImportanceFactors() {
  UpdateBasicEventsIndicators();
  _factors.assign(_basicEvents.size(), 0.0);
  _occurrences.assign(_basicEvents.size(), 0);
  _manager->AddMarginalImportanceFactors(_root, _factors);
  _manager->AddNumbersOfOccurrences(_root, _occurrences);
  for (std::size_t i = 0; i < _basicEvents.size(); ++i) {
    _basicEvents[i].marginalImportanceFactor = _factors[i];
    _basicEvents[i].numberOfOccurrences = _occurrences[i];
  }
}

// Offered to users of the class; the program itself does not call what follows.

OrvaMCSSet* OrvaMCSSet::Copy() const { return new OrvaMCSSet(_manager, _manager->CopyTree(_root)); }

void OrvaMCSSet::CollectMinimalCutsets(LumoContainer* result) const {
  if (_root != nullptr) _root->CollectMinimalCutsets(result);
}

void OrvaMCSSet::DeleteBasicEventTable() { _basicEvents.clear(); }
