#pragma once

#include <cstddef>
#include <cstdio>

class LumoConstant;
class LumoString;

// What every table is written to and every input read from. Values are written as text; reals
// with a number of significant digits of the stream, 6 unless set otherwise ("%.6g").
class LumoStream {
 public:
  LumoStream();
  virtual ~LumoStream();
  LumoStream(const LumoStream&) = delete;
  LumoStream& operator=(const LumoStream&) = delete;

  // The file behind the stream, null when there is none. Not handed over.
  virtual std::FILE* GetFile() const = 0;
  // The next character, -1 at the end of the input.
  virtual int GetChar() = 0;
  // Makes `c` the next character to read.
  virtual void UnGetChar(char c) = 0;
  virtual bool IsAtEnd() = 0;
  virtual void Put(char c) = 0;
  virtual void Put(int value) = 0;
  virtual void Put(long value) = 0;
  virtual void Put(float value) = 0;
  // One value written with a printf format for a double.
  virtual void Put(const char* format, float value) = 0;
  virtual void Put(double value) = 0;
  virtual void Put(const char* format, double value) = 0;
  // A text, in which backslash sequences are interpreted (see LumoFileStream). Null writes
  // nothing.
  virtual void Put(const char* text) = 0;
  virtual void Flush() = 0;
  virtual void Close() = 0;
  // Bytes as they are, backslashes too.
  virtual void PutBytes(const char* bytes, std::size_t size);

  // By type: "nil", "true" or "false", the integer, the real, the text, the pointer as a number.
  void Put(const LumoConstant* value);

  // The end of a row: a newline, then, on the standard streams, which somebody may be watching, a
  // flush. Putln(x) writes the value first.
  void Putln();
  // What the standard streams do at the end of a row, for rows that are put as bytes.
  void EndLines();
  template <class Value>
  void Putln(Value value) {
    Put(value);
    Putln();
  }
  template <class Real>
  void Putln(const char* format, Real value) {
    Put(format, value);
    Putln();
  }

  int GetSignificantDigitNumber() const { return _significantDigits; }

  // Offered to users of the class; the program itself does not call what follows.

  void Put(const LumoString* text);
  // The integer pointed to; null writes nothing.
  void Put(const int* value);
  void SetSignificantDigitNumber(int n) { _significantDigits = n; }
  // The number of newlines read, counting from 1.
  int GetLineNumber() const { return _lineNumber; }
  void ResetLineNumber() { _lineNumber = 1; }
  // Every character read or written is echoed to the trace stream while one is set. Not owned.
  void SetTraceStream(LumoStream* stream) { _traceStream = stream; }
  void ResetTraceStream() { _traceStream = nullptr; }

 protected:
  bool _IsTraced() const { return _traceStream != nullptr; }
  // Echoes a character to the trace stream, if any.
  void _Trace(char c) {
    if (_traceStream != nullptr) _traceStream->Put(c);
  }

  int _lineNumber = 1;

 private:
  int _significantDigits = 6;
  LumoStream* _traceStream = nullptr;
};
