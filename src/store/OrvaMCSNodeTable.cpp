#include "store/OrvaMCSNodeTable.h"

#include <algorithm>
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

void OrvaMCSNodePage::Reset() {
  std::memset(static_cast<void*>(_nodes), 0, static_cast<std::size_t>(_size) * sizeof *_nodes);
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

void OrvaMCSNodeTable::Reset() {
  _DeletePages();
  _NewPage();
}

int OrvaMCSNodeTable::GetNumberOfNodes() const {
  int number = 0;
  for (const OrvaMCSNodePage* page : _pages) number += page->GetSize();
  return number;
}

void OrvaMCSNodeTable::_NewPage() {
  if (2 * _currentPageSize <= MAXIMUM_PAGE_SIZE) _currentPageSize *= 2;
  _pages.push_back(new OrvaMCSNodePage(this, _currentPageSize));
  _nextUnusedNode = 0;
}

OrvaMCSNode* OrvaMCSNodeTable::_NewUnusedNode() {
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

void OrvaMCSNodeTable::FoldInternalNode(OrvaMCSNode* node, unsigned mask) {
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
