#include "support/containers/LumoContainer.h"

#include "support/containers/LumoFunction.h"
#include "support/containers/LumoRange.h"

namespace {

// Removes through a cursor every item that `isChosen` picks, handing each to `release`.
template <class Choice>
void RemoveChosenItems(LumoContainer& container, Choice isChosen, LumoContainer::Release release) {
  const std::unique_ptr<LumoCursor> cursor(container.NewCursor());
  cursor->ResetOnFirstItem();
  while (!cursor->IsAfterLastItem()) {
    if (isChosen(cursor->GetItem())) {
      release(cursor->RemoveItemAndIncrement());
    } else {
      cursor->Increment();
    }
  }
}

}  // namespace

bool LumoContainer::DoesContainItem(const void* item) const { return GetItemPosition(item) != 0; }

void* LumoContainer::LookForItem(Match match, const void* key) const {
  const LumoFunctionComparator comparator(match);
  return LookForItem(&comparator, key);
}

void LumoContainer::DeleteItems(Match match, const void* key, Release release) {
  const LumoFunctionComparator comparator(match);
  DeleteItems(&comparator, key, release);
}

void LumoContainer::DeleteItems(const LumoComparator* comparator, const void* key,
                                Release release) {
  RemoveChosenItems(
      *this, [=](const void* item) { return comparator->Compare(item, key) == 0; }, release);
}

int LumoContainer::GetItemPosition(const void* item) const {
  return SearchItem(LumoFunction::CompareAddress, item);
}

int LumoContainer::SearchItem(Match match, const void* key) const {
  const LumoFunctionComparator comparator(match);
  return SearchItem(&comparator, key);
}

int LumoContainer::SearchItem(const LumoComparator* comparator, const void* key) const {
  int position = 0;
  for (const void* item : LumoItems<void>(*this)) {
    ++position;
    if (comparator->Compare(item, key) == 0) return position;
  }
  return 0;
}

void LumoContainer::CollectItems(LumoContainer* target) const {
  for (void* item : LumoItems<void>(*this)) target->InsertItem(item);
}

void LumoContainer::CollectItems(Match match, const void* key, LumoContainer* target) const {
  const LumoFunctionComparator comparator(match);
  CollectItems(&comparator, key, target);
}

void LumoContainer::CollectItems(const LumoComparator* comparator, const void* key,
                                 LumoContainer* target) const {
  for (void* item : LumoItems<void>(*this)) {
    if (comparator->Compare(item, key) == 0) target->InsertItem(item);
  }
}

void LumoContainer::RemoveItems() { DeleteItems(LumoFunction::DoNothing); }

void LumoContainer::DeleteItems(const LumoContainer* other, Release release) {
  if (other == this) return DeleteItems(release);
  for (const void* item : LumoItems<void>(*other)) {
    if (void* removed = RemoveItem(item)) release(removed);
  }
}

// Offered to users of the class; the program itself does not call what follows.

int LumoContainer::CountItems(Predicate predicate) const {
  int count = 0;
  for (const void* item : LumoItems<void>(*this)) count += static_cast<int>(predicate(item));
  return count;
}

int LumoContainer::CountItems(Match match, const void* key) const {
  const LumoFunctionComparator comparator(match);
  return CountItems(&comparator, key);
}

int LumoContainer::CountItems(const LumoComparator* comparator, const void* key) const {
  int count = 0;
  for (const void* item : LumoItems<void>(*this)) {
    count += static_cast<int>(comparator->Compare(item, key) == 0);
  }
  return count;
}

void LumoContainer::CollectItems(Predicate predicate, LumoContainer* target) const {
  for (void* item : LumoItems<void>(*this)) {
    if (predicate(item)) target->InsertItem(item);
  }
}

void LumoContainer::Apply(void (*function)(void*, void*), void* argument) {
  for (void* item : LumoItems<void>(*this)) function(item, argument);
}

void LumoContainer::Apply(void* (*function)(void*, void*), void* argument, LumoContainer* target) {
  for (void* item : LumoItems<void>(*this)) {
    if (void* result = function(item, argument)) target->InsertItem(result);
  }
}

void LumoContainer::RemoveItems(Match match, const void* key) {
  DeleteItems(match, key, LumoFunction::DoNothing);
}

void LumoContainer::RemoveItems(const LumoComparator* comparator, const void* key) {
  DeleteItems(comparator, key, LumoFunction::DoNothing);
}

void LumoContainer::RemoveItems(const LumoContainer* other) {
  DeleteItems(other, LumoFunction::DoNothing);
}

void LumoContainer::Add(const LumoContainer* other) {
  if (other == this) return;
  for (void* item : LumoItems<void>(*other)) {
    if (!DoesContainItem(item)) InsertItem(item);
  }
}

void LumoContainer::Subtract(const LumoContainer* other) {
  RemoveChosenItems(
      *this, [=](const void* item) { return other->DoesContainItem(item); },
      LumoFunction::DoNothing);
}

void LumoContainer::Select(const LumoContainer* other) {
  RemoveChosenItems(
      *this, [=](const void* item) { return !other->DoesContainItem(item); },
      LumoFunction::DoNothing);
}

int LumoContainer::CountItemsOfUnion(const LumoContainer* other) const {
  return GetNumberOfItems() + other->CountItemsOfDifference(this);
}

int LumoContainer::CountItemsOfIntersection(const LumoContainer* other) const {
  return GetNumberOfItems() - CountItemsOfDifference(other);
}

int LumoContainer::CountItemsOfDifference(const LumoContainer* other) const {
  int count = 0;
  for (const void* item : LumoItems<void>(*this)) {
    count += static_cast<int>(!other->DoesContainItem(item));
  }
  return count;
}

bool LumoContainer::DoesContainItems(const LumoContainer* other) const {
  return other->CountItemsOfDifference(this) == 0;
}

bool LumoContainer::HasSameItems(const LumoContainer* other) const {
  return DoesContainItems(other) && other->DoesContainItems(this);
}

void LumoContainer::DeleteWithItems(Release release) {
  DeleteItems(release);
  delete this;
}
