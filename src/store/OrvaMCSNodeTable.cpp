// Nodes are made and freed one by one, by the million, and never moved: trees point into them. They
// come from pages, each twice as long as the one before up to a million nodes, so that a small
// study takes one page and a large one few. A freed node goes onto a list that runs through the
// nodes themselves; the last one freed is the next one made, which is likely to be still in the
// cache.
//
// The nodes of the last page that were never used count as the end of that list, in their order.
// They are not chained together, for this would touch a page of 32 MB to use its first node.
//
// Folding takes a subtree back where it holds nothing that is asked for: a node below which lie
// only leaves of kinds outside a mask becomes one leaf of these kinds. Since an internal node joins
// the types of its sons, a look at the two sons is enough, and whoever folds a path from its end
// upward folds as much as can be folded.

#include "store/OrvaMCSNodeTable.h"

#include <cstring>

#include "store/OrvaMCSTreeWalk.h"
#include "support/memory/LumoMemoryManager.h"

OrvaMCSNodePage::OrvaMCSNodePage(OrvaMCSNodeTable* table, int size)
    : _table(table), _size(size), _nodes(new OrvaMCSNode[static_cast<std::size_t>(size)]) {
  LumoMemoryManager::TraceNew(this, "OrvaMCSNodePage");
}

OrvaMCSNodePage::~OrvaMCSNodePage() {
  delete[] _nodes;
  LumoMemoryManager::TraceDelete(this, "OrvaMCSNodePage");
}

OrvaMCSNodeTable::OrvaMCSNodeTable(OrvaMCSManager* manager) : _manager(manager) {
  LumoMemoryManager::TraceNew(this, "OrvaMCSNodeTable");
}

OrvaMCSNodeTable::~OrvaMCSNodeTable() {
  _DeletePages();
  LumoMemoryManager::TraceDelete(this, "OrvaMCSNodeTable");
}

void OrvaMCSNodeTable::_DeletePages() {
  for (OrvaMCSNodePage* page : _pages) delete page;
  _pages.clear();
  _freeNode = nullptr;
  _nextUnusedNode = 0;
  _currentPageSize = STARTING_PAGE_SIZE;
}

void OrvaMCSNodeTable::_NewPage() {
  assert(_pages.empty() || _nextUnusedNode == _pages.back()->GetSize());
  if (2 * _currentPageSize <= MAXIMUM_PAGE_SIZE) _currentPageSize *= 2;
  _pages.push_back(new OrvaMCSNodePage(this, _currentPageSize));
  _nextUnusedNode = 0;
}

OrvaMCSNode* OrvaMCSNodeTable::_NewUnusedNode() {
  assert(_freeNode == nullptr);
  if (_pages.empty() || _nextUnusedNode == _pages.back()->GetSize()) _NewPage();
  return _pages.back()->GetNode(_nextUnusedNode++);
}

void OrvaMCSNodeTable::FreeTree(OrvaMCSNode* root) {
  struct Liberator : OrvaMCSTreeVisitor {
    explicit Liberator(OrvaMCSNodeTable* nodes) : table(nodes) {}
    void Leave(OrvaMCSNode* node) {
      table->FreeNode(node->GetThenSon());
      table->FreeNode(node->GetElseSon());
    }
    OrvaMCSNodeTable* table;
  };
  if (root == nullptr) return;
  Liberator liberator(this);
  OrvaWalkMCSTree(root, liberator);
  FreeNode(root);
}

void OrvaMCSNodeTable::FoldInternalNode(OrvaMCSNode* node, unsigned mask) {
  assert(node->IsInternal());
  const std::uint32_t sons = node->GetThenSon()->GetType() | node->GetElseSon()->GetType();
  if ((sons & mask) != 0) {
    node->_SetWord(OrvaMCSNode::INTERNAL | sons, node->GetIndex());
    return;
  }
  FreeTree(node->GetThenSon());
  FreeTree(node->GetElseSon());
  node->_SetWord(sons, 0);
  node->_weight = 0.0;
  node->_else = nullptr;
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaMCSNodePage::Reset() {
  std::memset(static_cast<void*>(_nodes), 0, static_cast<std::size_t>(_size) * sizeof *_nodes);
}

OrvaMCSNode* OrvaMCSNodeTable::CopyTree(OrvaMCSNode* root) {
  struct Copier : OrvaMCSTreeVisitor {
    explicit Copier(OrvaMCSNodeTable* nodes) : table(nodes) {}
    void VisitLeaf(OrvaMCSNode* leaf) {
      copies.push_back(table->NewLeaf(leaf->IsMinimalCutset() ? OrvaMCSNode::MINIMAL_CUTSET
                                                              : OrvaMCSNode::UNDEVELOPED));
    }
    void Leave(OrvaMCSNode* node) {
      OrvaMCSNode* elseSon = copies.back();
      copies.pop_back();
      copies.back() = table->NewInternalNode(node->GetIndex(), copies.back(), elseSon);
    }
    OrvaMCSNodeTable* table;
    std::vector<OrvaMCSNode*> copies;
  };
  Copier copier(this);
  OrvaWalkMCSTree(root, copier);
  return copier.copies.empty() ? nullptr : copier.copies.back();
}

void OrvaMCSNodeTable::ResetTree(OrvaMCSNode* root) {
  struct Resetter : OrvaMCSTreeVisitor {
    explicit Resetter(OrvaMCSNodeTable* nodes) : table(nodes) {}
    void VisitLeaf(OrvaMCSNode* leaf) {
      if (leaf->GetType() == OrvaMCSNode::CUTOFF) table->MuteLeaf(leaf, OrvaMCSNode::UNDEVELOPED);
    }
    void Leave(OrvaMCSNode* node) {
      const std::uint32_t sons = node->GetThenSon()->GetType() | node->GetElseSon()->GetType();
      node->_SetWord(OrvaMCSNode::INTERNAL | sons, node->GetIndex());
    }
    OrvaMCSNodeTable* table;
  };
  Resetter resetter(this);
  OrvaWalkMCSTree(root, resetter);
}

void OrvaMCSNodeTable::Reset() {
  ++_numberOfChanges;
  _DeletePages();
  _NewPage();
}

int OrvaMCSNodeTable::GetNumberOfNodes() const {
  int number = 0;
  for (const OrvaMCSNodePage* page : _pages) number += page->GetSize();
  return number;
}
