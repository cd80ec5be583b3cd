#pragma once

#include "support/text/LumoStream.h"

// A stream over a standard-I/O file, for reading or for writing, not both.
//
// Output operations do nothing on an input stream or without a file, input operations yield the
// end on an output stream. The destructor leaves the file open: it belongs to whoever opened it,
// or to Close.
class LumoFileStream : public LumoStream {
 public:
  LumoFileStream(bool input, std::FILE* file);
  ~LumoFileStream() override;

  using LumoStream::Put;

  std::FILE* GetFile() const override { return _file; }
  int GetChar() override;
  void UnGetChar(char c) override;
  bool IsAtEnd() override;
  void Put(char c) override;
  void Put(int value) override;
  void Put(long value) override;
  void Put(float value) override;
  void Put(const char* format, float value) override;
  void Put(double value) override;
  void Put(const char* format, double value) override;

  // Interprets backslash sequences as it writes: backslash and double quote give a double quote,
  // two backslashes one backslash, backslash and n a newline, backslash and t a tab. A backslash
  // before any other character, or at the end of the text, is written as it is.
  void Put(const char* text) override;
  void PutBytes(const char* bytes, std::size_t size) override;

  void Flush() override;
  // Flushes, closes the file unless it is standard input, output or error, and forgets it.
  void Close() override;

 private:
  bool _IsOutput() const { return !_input && _file != nullptr; }

  bool _input;
  LumoString* _pushBack;
  std::FILE* _file;
};
