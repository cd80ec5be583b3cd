#pragma once

#include <cassert>

class OrvaEvent;
class OrvaMCSEntryTable;
class OrvaMCSManager;
class OrvaMCSNode;
class OrvaVariable;

// What the cutset engine knows of one basic event. Nothing in it is owned.
class OrvaMCSEntry {
 public:
  // Codes free for whoever uses them.
  using Value = int;
  static constexpr Value DEFAULT_VALUE = 2;

  // Offered to users of the class; the program itself does not call what follows.
  OrvaMCSEntryTable* GetTable() const { return _table; }
  OrvaEvent* GetEvent() const { return _event; }
  // The variable of the system being searched.
  OrvaVariable* GetVariable() const { return _variable; }
  Value GetValue() const { return _value; }
  double GetProbability() const { return _probability; }
  // The tree that takes the place of a module's variable, during the expansion of modules.
  OrvaMCSNode* GetModuleTree() const { return _moduleTree; }

 private:
  friend class OrvaMCSEntryTable;

  OrvaMCSEntryTable* _table = nullptr;  // null for a place without entry
  OrvaEvent* _event = nullptr;
  OrvaVariable* _variable = nullptr;
  OrvaMCSNode* _moduleTree = nullptr;
  double _probability = 0.0;  // a place without entry reads so; an entry starts at 1.0
  Value _value = DEFAULT_VALUE;
};

// The entries by basic event index, in one array. A setter makes the entry that it needs; a getter
// of an index without entry yields null, probability 0.0 or value 2. Indices must lie below the
// size of the table, which grows on demand and never shrinks.
class OrvaMCSEntryTable {
 public:
  static constexpr int INITIAL_SIZE = 8192;

  explicit OrvaMCSEntryTable(OrvaMCSManager* manager);
  ~OrvaMCSEntryTable();
  OrvaMCSEntryTable(const OrvaMCSEntryTable&) = delete;
  OrvaMCSEntryTable& operator=(const OrvaMCSEntryTable&) = delete;

  int GetSize() const { return _size; }
  void Resize(int size);
  // 0 while there is no entry.
  int GetIndexOfHighestEntry() const { return _highest; }
  OrvaMCSEntry* CreateEntry(int index);

  OrvaEvent* GetEvent(int index) const { return _GetPlace(index)._event; }
  OrvaVariable* GetVariable(int index) const { return _GetPlace(index)._variable; }
  double GetProbability(int index) const { return _GetPlace(index)._probability; }
  OrvaMCSNode* GetModuleTree(int index) const { return _GetPlace(index)._moduleTree; }
  void SetEvent(int index, OrvaEvent* event) { CreateEntry(index)->_event = event; }
  void SetVariable(int index, OrvaVariable* variable) { CreateEntry(index)->_variable = variable; }
  void SetProbability(int index, double probability) {
    CreateEntry(index)->_probability = probability;
  }
  void SetModuleTree(int index, OrvaMCSNode* tree) { CreateEntry(index)->_moduleTree = tree; }

  // Offered to users of the class; the program itself does not call what follows.
  // Deletes every entry.
  void Reset();
  int GetIndexOfLowestEntry() const { return _lowest; }
  // Null without entry.
  OrvaMCSEntry* GetEntry(int index) const {
    OrvaMCSEntry& place = _GetPlace(index);
    return place._table == nullptr ? nullptr : &place;
  }
  // An entry is active when it has an event.
  bool IsEntryActive(int index) const { return _GetPlace(index)._event != nullptr; }
  int GetNumberOfActiveEntries() const;
  OrvaMCSEntry::Value GetValue(int index) const { return _GetPlace(index)._value; }
  void SetValue(int index, OrvaMCSEntry::Value value) { CreateEntry(index)->_value = value; }

 private:
  OrvaMCSEntry& _GetPlace(int index) const {
    assert(index >= 0 && index < _size);
    return _entries[index];
  }

  OrvaMCSManager* _manager;
  OrvaMCSEntry* _entries;  // owned
  int _size = INITIAL_SIZE;
  int _lowest = 0;
  int _highest = 0;
};
