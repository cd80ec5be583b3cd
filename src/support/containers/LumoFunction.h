#pragma once

// Plain functions handed to containers and attributes.
class LumoFunction {
 public:
  LumoFunction() = delete;

  // The release function of a borrowed pointer.
  static void DoNothing(void* item);
  // Matches one very pointer; otherwise orders by address.
  static int CompareAddress(const void* item, const void* key);

  // Offered to users of the class; the program itself does not call what follows.

  // The item itself: the key function of a container that is its own key.
  static void* SelfAccess(void* item);
  // Matches everything.
  static int Return0(const void* item, const void* key);
  // Writes the text and a newline to standard error.
  static void TraceMessage(const char* text);
};
