#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "support/text/LumoFileStream.h"

// The entry point of every fuzz target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Ends the process, which is a finding, unless the condition holds.
void OrvaRequire(bool condition, const char* expectation);

// Bytes as an open file. They must outlive it.
class OrvaBytesFile {
 public:
  explicit OrvaBytesFile(std::string_view bytes);
  ~OrvaBytesFile();
  OrvaBytesFile(const OrvaBytesFile&) = delete;
  OrvaBytesFile& operator=(const OrvaBytesFile&) = delete;
  std::FILE* Get() const { return _file; }

 private:
  std::FILE* _file;
};

// Requires that as many objects live at its end as at its beginning.
class OrvaBalanceCheck {
 public:
  OrvaBalanceCheck();
  ~OrvaBalanceCheck();
  OrvaBalanceCheck(const OrvaBalanceCheck&) = delete;
  OrvaBalanceCheck& operator=(const OrvaBalanceCheck&) = delete;

 private:
  std::int64_t _balance;
};

// A stream whose output is dropped. There is one, for the whole process.
LumoFileStream* OrvaGetNowhere();

inline std::string_view OrvaToText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}
