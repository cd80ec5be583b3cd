#include "support/text/LumoStream.h"

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoString.h"
#include "support/values/LumoConstant.h"

LumoStream::LumoStream() { LumoMemoryManager::TraceNew(this, "LumoStream"); }

LumoStream::~LumoStream() { LumoMemoryManager::TraceDelete(this, "LumoStream"); }

void LumoStream::PutBytes(const char* bytes, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) Put(bytes[i]);
}

void LumoStream::Put(const LumoConstant* value) {
  switch (value->GetType()) {
    case LumoConstant::NIL:
      return Put("nil");
    case LumoConstant::BOOL:
      return Put(value->ToBool() ? "true" : "false");
    case LumoConstant::INT:
      return Put(value->ToInt());
    case LumoConstant::DOUBLE:
      return Put(value->ToDouble());
    case LumoConstant::STRING:
      return Put(value->ToString());
    case LumoConstant::POINTER:
      return Put(value->ToAddress());
  }
}

void LumoStream::Putln() {
  Put('\n');
  EndLines();
}

void LumoStream::EndLines() {
  const std::FILE* file = GetFile();
  if (file == stdout || file == stderr) Flush();
}

// Offered to users of the class; the program itself does not call what follows.

void LumoStream::Put(const LumoString* text) { Put(text->GetAscii()); }

void LumoStream::Put(const int* value) {
  if (value != nullptr) Put(*value);
}
