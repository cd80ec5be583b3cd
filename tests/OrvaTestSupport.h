#pragma once

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "model/OrvaParser.h"
#include "support/text/LumoFileStream.h"
#include "xml/LumoXMLDocument.h"

// A text as an open file. The text must outlive it.
class OrvaTextFile {
 public:
  explicit OrvaTextFile(const std::string& text)
      : _file(text.empty() ? std::fopen("/dev/null", "r")
                           : fmemopen(const_cast<char*>(text.data()), text.size(), "r")) {}
  ~OrvaTextFile() { std::fclose(_file); }
  OrvaTextFile(const OrvaTextFile&) = delete;
  OrvaTextFile& operator=(const OrvaTextFile&) = delete;
  std::FILE* Get() const { return _file; }

 private:
  std::FILE* _file;
};

// A stream that keeps what is written to it.
class OrvaTextStream {
 public:
  OrvaTextStream() : _file(open_memstream(&_text, &_size)), _stream(false, _file) {}
  ~OrvaTextStream() {
    std::fclose(_file);
    std::free(_text);
  }
  OrvaTextStream(const OrvaTextStream&) = delete;
  OrvaTextStream& operator=(const OrvaTextStream&) = delete;
  LumoFileStream* Get() { return &_stream; }
  std::string GetText() {
    std::fflush(_file);
    return std::string(_text, _size);
  }

 private:
  char* _text = nullptr;
  std::size_t _size = 0;
  std::FILE* _file;
  LumoFileStream _stream;
};

// An interpreter whose messages are kept. Models and scripts are given as the elements below the
// root; results go to a file of the given name in the working folder.
class OrvaTestEngine {
 public:
  OrvaTestEngine() { _interpreter.GetParser()->SetErrorStream(_errors.Get()); }

  OrvaInterpreter* operator->() { return &_interpreter; }
  OrvaInterpreter* Get() { return &_interpreter; }
  OrvaModel* GetModel() { return _interpreter.GetModel(); }
  OrvaEvent* GetEvent(const char* name) { return GetModel()->LookForEvent(name); }
  std::string GetErrors() { return _errors.GetText(); }

  // Both return the error indicator.
  int Load(const std::string& elements) { return _Evaluate("open-psa", elements); }
  int Run(const std::string& commands) { return _Evaluate("orva", commands); }

  // What a file holds; empty when there is none.
  static std::string ReadFile(const std::string& name) {
    std::ifstream file(name);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }

 private:
  int _Evaluate(const std::string& root, const std::string& elements) {
    const std::string text =
        "<?xml version=\"1.0\"?>\n<" + root + ">\n" + elements + "\n</" + root + ">\n";
    const OrvaTextFile file(text);
    int error = 0;
    _interpreter.DownloadCommandScript(error, file.Get());
    return error;
  }

  OrvaTextStream _errors;
  OrvaInterpreter _interpreter;
};
