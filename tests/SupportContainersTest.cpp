#include <array>
#include <functional>
#include <memory>
#include <random>

#include "OrvaTestSupport.h"
#include "support/containers/LumoAVLTree.h"
#include "support/containers/LumoArray.h"
#include "support/containers/LumoFunction.h"
#include "support/containers/LumoList.h"
#include "support/containers/LumoRange.h"

namespace {

// An item with a key that others may share, a name, and a mark word.
struct Item {
  int key = 0;
  char name = '?';
  int mark = 0;
};

int numberOfComparisons = 0;
int CompareKeys(const void* a, const void* b) {
  ++numberOfComparisons;
  return static_cast<const Item*>(a)->key - static_cast<const Item*>(b)->key;
}
int MatchKey(const void* item, const void* key) {
  return static_cast<const Item*>(item)->key - *static_cast<const int*>(key);
}
bool IsOdd(const void* item) { return static_cast<const Item*>(item)->key % 2 != 0; }
int CompareInts(const void* a, const void* b) {
  return *static_cast<const int*>(a) - *static_cast<const int*>(b);
}
void* GetKey(void* item) { return &static_cast<Item*>(item)->key; }
int* GetMark(void* item) { return &static_cast<Item*>(item)->mark; }
void MarkItem(void* item) { ++static_cast<Item*>(item)->mark; }

// The names of a container's items, in its order.
std::string Names(const LumoContainer& container) {
  std::string names;
  for (const Item* item : LumoItems<Item>(container)) names += item->name;
  return names;
}

// The same for a new container, which is deleted.
std::string TakeNames(LumoContainer* container) {
  const std::unique_ptr<LumoContainer> owner(container);
  return Names(*container);
}

// The slots of an array, "." for an empty one.
std::string Slots(const LumoArray& array) {
  std::string slots;
  for (int i = 0; i < array.GetSize(); ++i) {
    const auto* item = static_cast<const Item*>(array.GetItem(i));
    slots += item == nullptr ? '.' : item->name;
  }
  return slots;
}

// Items a .. z with keys 1 .. 26, and containers filled by their names.
class ContainersTest : public testing::Test {
 protected:
  ContainersTest() {
    for (int i = 0; i < 26; ++i) _items[Index(i)] = {i + 1, static_cast<char>('a' + i), 0};
  }
  Item* Get(char name) { return &_items[Index(name - 'a')]; }
  void Fill(LumoContainer& container, const char* names) {
    for (; *names != '\0'; ++names) container.InsertItem(Get(*names));
  }

 private:
  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
  std::array<Item, 26> _items;
};

// What holds for every container; the items of each come in alphabetical order.
class AnyContainerTest : public ContainersTest, public testing::WithParamInterface<int> {
 protected:
  std::unique_ptr<LumoContainer> Make(const char* names = "") {
    std::unique_ptr<LumoContainer> container;
    if (GetParam() == 0) container = std::make_unique<LumoArray>(2);
    if (GetParam() == 1) container = std::make_unique<LumoList>();
    if (GetParam() == 2) container = std::make_unique<LumoAVLTree>(CompareKeys);
    Fill(*container, names);
    return container;
  }
};

}  // namespace

TEST_P(AnyContainerTest, FindsCountsAndRemovesItems) {
  const auto container = Make("abcde");
  const int three = 3, none = 99;
  EXPECT_EQ(container->GetItemPosition(Get('d')), 4);
  EXPECT_EQ(container->SearchItem(MatchKey, &three), 3);
  EXPECT_EQ(container->LookForItem(MatchKey, &none), nullptr);
  EXPECT_EQ(container->CountItems(IsOdd) + container->CountItems(MatchKey, &three), 4);
  const Item sameKey{3, 'x', 0};
  EXPECT_FALSE(container->DoesContainItem(&sameKey));  // identity
  LumoList odd;
  container->CollectItems(IsOdd, &odd);
  EXPECT_EQ(Names(odd), "ace");
  container->DeleteItems(MatchKey, &three, MarkItem);
  EXPECT_EQ(Get('c')->mark, 1);
  EXPECT_EQ(Names(*container), "abde");
  for (int i = 0; i < 5; ++i) container->RemoveLastItem();
  EXPECT_EQ(container->RemoveFirstItem(), nullptr);
  Fill(*container, "xy");
  container->DeleteItems(MarkItem);
  EXPECT_EQ(container->GetFirstItem(), nullptr);
  EXPECT_EQ(Get('x')->mark + Get('y')->mark, 2);
}

TEST_P(AnyContainerTest, SetOperations) {
  const struct {
    const char *left, *right, *sum, *both, *rest;
  } rows[] = {{"abcd", "cdef", "abcdef", "cd", "ab"},
              {"ab", "ab", "ab", "ab", ""},
              {"", "c", "c", "", ""},
              {"ac", "b", nullptr, "", "ac"}};
  for (const auto& [left, right, sum, both, rest] : rows) {
    const auto other = Make(right), added = Make(left), selected = Make(left),
               lessened = Make(left);
    EXPECT_EQ(added->CountItemsOfDifference(other.get()), std::ssize(std::string(rest)));
    EXPECT_EQ(added->CountItemsOfIntersection(other.get()), std::ssize(std::string(both)));
    EXPECT_EQ(added->HasSameItems(other.get()), *rest == '\0' && std::string(both) == right);
    added->Add(other.get());
    selected->Select(other.get());
    lessened->Subtract(other.get());
    EXPECT_EQ(Make(left)->CountItemsOfUnion(other.get()), added->GetNumberOfItems());
    if (sum != nullptr) {
      EXPECT_EQ(Names(*added), sum);  // else in the container's order
    }
    EXPECT_EQ(Names(*selected) + "|" + Names(*lessened), std::string(both) + "|" + rest);
  }
  auto left = Make("cdf");
  left->RemoveItems(Make("fz").get());
  left->DeleteItems(Make("dx").get(), MarkItem);
  EXPECT_EQ(Get('d')->mark, 1);
  EXPECT_EQ(Get('x')->mark, 0);  // it was not in the container
  left->InsertItems(Make("gh").get());
  left->Apply(
      [](void* item, void* by) { static_cast<Item*>(item)->mark += *static_cast<int*>(by); },
      GetKey(Get('e')));
  LumoList results;
  left->Apply([](void* item, void* but) { return item == but ? nullptr : item; }, Get('g'),
              &results);
  EXPECT_EQ(Names(results), "ch");  // results that are null are not collected
  left.release()->DeleteWithItems(MarkItem);
  EXPECT_EQ(Get('h')->mark, 6);
}

// Against a vector, over random insertions and removals, many of them of items with equal keys,
// which a tree keeps in the order of their insertion.
TEST_P(AnyContainerTest, AgreesWithAVector) {
  std::mt19937 random(20240229);
  std::vector<Item> items(3000);
  for (Item& item : items) item.key = 2 * static_cast<int>(random() % 1000);
  const auto container = Make();
  const std::unique_ptr<LumoCursor> cursor(container->NewCursor());
  std::vector<const void*> expected;
  const auto isBefore = [](const void* a, const void* b) { return CompareKeys(a, b) < 0; };
  for (Item& item : items) {
    // An array counts items, not slots, to find the last place.
    if (GetParam() == 0) static_cast<LumoArray&>(*container).CompactLeft();
    container->InsertItem(&item);
    expected.insert(GetParam() < 2
                        ? expected.end()
                        : std::upper_bound(expected.begin(), expected.end(), &item, isBefore),
                    &item);
    const auto place = expected.begin() + static_cast<long>(random() % expected.size());
    const auto n = static_cast<int>(place - expected.begin()) + 1;
    ASSERT_EQ(container->GetNthItem(n), *place);
    cursor->ResetOnItem(*place);
    ASSERT_EQ(cursor->GetItem(), *place);
    switch (random() % 6) {
      case 0: {  // a tree removes whichever of the equals
        const void* removed = container->RemoveItem(*place);
        ASSERT_EQ(CompareKeys(removed, *place), 0);
        expected.erase(std::find(expected.begin(), expected.end(), removed));
        break;
      }
      case 1:
        ASSERT_EQ(container->RemoveNthItem(n), *place);
        expected.erase(place);
        break;
      case 2: {  // through a cursor, which then stands on the neighbour
        const bool forwards = random() % 2 == 0;
        cursor->ResetInPosition(n);
        ASSERT_EQ(forwards ? cursor->RemoveItemAndIncrement() : cursor->RemoveItemAndDecrement(),
                  *place);
        const auto next = expected.erase(place);
        const bool isOutside = next == (forwards ? expected.end() : expected.begin());
        ASSERT_EQ(forwards ? cursor->IsAfterLastItem() : cursor->IsBeforeFirstItem(), isOutside);
        ASSERT_EQ(cursor->GetItem(), isOutside ? nullptr : *(forwards ? next : next - 1));
        break;
      }
      default:
        break;
    }
    ASSERT_EQ(container->GetNumberOfItems(), std::ssize(expected));
    if (random() % 50 != 0) continue;
    std::vector<const void*> actual;
    cursor->ResetOnFirstItem();
    cursor->Decrement();
    ASSERT_TRUE(cursor->IsBeforeFirstItem() && !cursor->IsAfterLastItem());
    for (const void* each : LumoItems<void>(*container)) actual.push_back(each);
    ASSERT_EQ(actual, expected);
    actual.clear();
    for (cursor->ResetOnLastItem(); !cursor->IsBeforeFirstItem(); cursor->Decrement()) {
      actual.insert(actual.begin(), cursor->GetItem());
    }
    ASSERT_EQ(actual, expected);
    // An AVL tree of height h has at least N(h) = N(h - 1) + N(h - 2) + 1 items, and a look for
    // what is not there, an odd key, takes as many comparisons as its path is long.
    int height = 0;
    for (Item absent{1, '?', 0}; GetParam() == 2 && absent.key < 2000; absent.key += 2) {
      numberOfComparisons = 0;
      ASSERT_EQ(container->LookForItem(CompareKeys, &absent), nullptr);
      height = std::max(height, numberOfComparisons);
    }
    int fewest = 0;
    for (int h = 0, below = 0; h < height; ++h) below = std::exchange(fewest, fewest + below + 1);
    ASSERT_LE(fewest, container->GetNumberOfItems());
  }
  ASSERT_GT(container->GetNumberOfItems(), 500);
}

INSTANTIATE_TEST_SUITE_P(All, AnyContainerTest, testing::Values(0, 1, 2));

using LumoArrayTest = ContainersTest;

// What an array of slots becomes, in increments of so many: an insertion counts items, not slots,
// and shifts what follows; sizes are whole increments.
TEST_F(LumoArrayTest, ChangesItsSlots) {
  using A = LumoArray;
  const struct {
    int increment;
    const char* before;
    std::function<void(A&)> change;
    const char* after;
  } rows[] = {
      {5, "a.b..", [&](A& a) { a.InsertItemLast(Get('c')); }, "a.cb."},
      {5, "a.b..", [&](A& a) { a.InsertItemFirst(Get('d')); }, "da.b."},
      {5, "a.b..", [&](A& a) { a.InsertItemAtIndex(2, Get('e')); }, "a.eb."},
      {5, "a.b..", [&](A& a) { a.InsertItemAtIndex(3, Get('e')); }, "a.b.."},  // beyond the items
      {5, "a.b..", [](A& a) { a.RemoveItem(2); }, "a...."},
      {5, "a.bc.", [](A& a) { a.RemoveItemAtIndex(1); }, "abc.."},
      {5, "a.bc.", [](A& a) { a.RemoveItemAtIndex(0); }, ".bc.."},
      {2, "ab", [](A& a) { a.Expand(1); }, "ab"},
      {2, "ab", [](A& a) { a.Expand(2); }, "ab.."},
      {2, "ab", [](A& a) { a.Expand(5); }, "ab...."},
      {2, "abcd..", [](A& a) { a.Shrink(3); }, "abcd"},
      {2, "abcd..", [](A& a) { a.Shrink(1); }, "ab"},
      {2, "abcd..", [](A& a) { a.Shrink(0); }, "ab"},
      {2, "abcd..", [](A& a) { a.Shrink(9); }, "abcd.."},
      {2, "abcd..", [](A& a) { a.Shrink(-1); }, ""},
      {8, "a.b..c.d", [](A& a) { a.CompactBlockLeft(1, 5); }, "abc....d"},
      {8, "abc....d", [](A& a) { a.CompactBlockRight(0, 4); }, ".abc...d"},
      {8, "a.b..c.d", [](A& a) { a.CompactLeft(); }, "abcd...."},
      {8, "a.b..c..", [](A& a) { a.CompactRight(); }, ".....abc"},
      {8, "a.b..c.d", [](A& a) { a.SwapItems(0, 4); }, "..b.ac.d"},
      {8, "a...bc.d", [](A& a) { a.ShiftBlockLeft(4, 4, 3); }, "abc.d..."},
      {8, "a.bc....", [](A& a) { a.ShiftBlockRight(1, 3, 2); }, "a...bc.."},
      {8, "a.b..c.d", [](A& a) { a.RemoveItems(2, 5); }, "a......d"},
      {3, "ab.", [&](A& a) { a.PushItem(Get('x')), a.PushItem(nullptr); }, "abx"},  // as a stack
      {3, "abx", [](A& a) { a.PopItem(); }, "ab."},
      {8, "f.ce.adb", [](A& a) { a.SortBlock(1, 6, CompareKeys); }, "facde..b"},
      {8, "f.ce.adb", [](A& a) { a.Sort(CompareKeys); }, "abcdef.."}};
  for (const auto& [increment, before, change, after] : rows) {
    SCOPED_TRACE(std::string(before) + " " + after);
    LumoArray array(increment);
    for (int i = 0; before[i] != '\0'; ++i) {
      array.SetItem(i, before[i] == '.' ? nullptr : Get(before[i]));
    }
    const std::unique_ptr<LumoArray> copy(array.Copy());
    change(array);
    EXPECT_EQ(Slots(array), after);
    EXPECT_EQ(array.GetNumberOfItems(), std::ssize(Names(array)));
    EXPECT_EQ(Slots(*copy), before);
    EXPECT_EQ(copy->GetNumberOfItems(), std::ssize(Names(*copy)));
  }
}

TEST_F(LumoArrayTest, CountsItemsNotSlots) {
  LumoArray array(3);
  array.SetItem(0, Get('a'));
  array.SetItem(2, Get('b'));
  EXPECT_EQ(array.GetNthItem(2), Get('b'));
  EXPECT_EQ(array.GetNthItem(0), Get('a'));  // slot 0 as it is
  EXPECT_EQ(array.GetIndexOfNthItem(3), -1);
  LumoArrayCursor one(&array), two(&array);
  one.ResetOnLastItem();
  two.ResetOnCursor(&one);
  two.Decrement();
  one.ExchangeItems(&two);
  one.SubstituteItemForItem(Get('z'));
  EXPECT_EQ(Slots(array), "b.z");
}

using LumoListTest = ContainersTest;

TEST_F(LumoListTest, InsertsAndReachesAnywhere) {
  using L = LumoList;
  const int two = 2, none = 99;
  const struct {
    const char* before;
    std::function<void(L&)> change;
    const char* after;
  } rows[] = {{"bc", [&](L& l) { l.Push(Get('a')); }, "abc"},  // a stack at its head
              {"abc", [](L& l) { l.Pop(); }, "bc"},
              {"bc", [&](L& l) { l.EnQueue(Get('a')); }, "bca"},  // a queue at its end
              {"abc", [&](L& l) { l.InsertItemBefore(MatchKey, &two, Get('x')); }, "axbc"},
              {"abc", [&](L& l) { l.InsertItemAfter(MatchKey, &two, Get('x')); }, "abxc"},
              {"abc", [&](L& l) { l.InsertItemAfter(MatchKey, &none, Get('x')); }, "abc"},
              {"abc", [&](L& l) { l.InsertItemInPosition(Get('x'), -1); }, "xabc"},
              {"abc", [&](L& l) { l.InsertItemInPosition(Get('x'), 3); }, "abxc"},
              {"abc", [&](L& l) { l.InsertItemAfter(l.GetLastCell(), Get('x')); }, "abcx"},
              {"abc", [&](L& l) { l.InsertItemBefore(l.GetFirstCell(), Get('x')); }, "xabc"},
              {"abcdef", [](L& l) { EXPECT_EQ(TakeNames(l.ExtractRange(3, 5)), "cde"); }, "abf"},
              {"abc", [](L& l) { l.Reverse(); }, "cba"},
              {"hcfabgde", [](L& l) { l.QuickSort(CompareKeys); }, "abcdefgh"},
              {"hcfa", [](L& l) { l.QuickSort(GetKey, CompareInts); }, "acfh"}};
  for (const auto& [before, change, after] : rows) {
    SCOPED_TRACE(std::string(before) + " " + after);
    LumoList list;
    Fill(list, before);
    change(list);
    EXPECT_EQ(Names(list), after);
    const int n = list.GetNumberOfItems();
    for (int i = 1; i <= n; ++i) {  // the links backwards too
      EXPECT_EQ(list.GetNthItem(i), Get(after[i - 1]));
      EXPECT_EQ(list.GetNthItem(i - n - 1), Get(after[i - 1]));
    }
    for (const int outside : {0, n + 1, -n - 1}) EXPECT_EQ(list.GetNthItem(outside), nullptr);
  }
  LumoList list(2, Get('b'), Get('c'));
  const std::unique_ptr<LumoList> copy(list.Copy());
  list.Append(copy.get());
  EXPECT_EQ(Names(list) + Names(*copy), "bcbcbc");
}

TEST_F(LumoListTest, BuildsSets) {
  LumoList left, right;
  Fill(left, "dbca");
  Fill(right, "ecfbe");
  EXPECT_EQ(TakeNames(left.BuildUnion(&right)), "dbcaef");
  EXPECT_EQ(TakeNames(left.BuildIntersection(&right)), "bc");
  EXPECT_EQ(TakeNames(left.BuildDifference(&right)), "da");
  EXPECT_EQ(TakeNames(left.BuildLinearUnion(&right, GetMark, 7)), "dbcaef");
  EXPECT_EQ(TakeNames(left.BuildLinearIntersection(&right, GetMark, 7)), "bc");
  EXPECT_EQ(TakeNames(left.BuildLinearDifference(&right, GetMark, 7)), "da");
  EXPECT_EQ(Names(left) + Names(right), "dbcaecfbe");
  LumoAVLTree leftTree(CompareKeys), rightTree(CompareKeys);
  Fill(leftTree, "dbca");
  Fill(rightTree, "fcbe");
  EXPECT_EQ(TakeNames(leftTree.BuildUnion(&rightTree)), "abcdef");
  EXPECT_EQ(TakeNames(leftTree.BuildIntersection(&rightTree)), "bc");
  EXPECT_EQ(TakeNames(leftTree.BuildDifference(&rightTree)), "ad");
  EXPECT_EQ(TakeNames(leftTree.CopyAsList()), "abcd");
}
