#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "reader/OrvaParser.h"
#include "support/containers/LumoRange.h"
#include "support/text/LumoFileStream.h"
#include "support/text/LumoRawString.h"
#include "system/OrvaSystem.h"
#include "xml/LumoXMLDocument.h"

inline std::vector<std::string> OrvaSplit(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), std::istream_iterator<std::string>()};
}

// The rows of a table below tests/tables: its lines without those of comments and empty ones.
inline std::vector<std::string> OrvaReadRows(const std::string& table) {
  std::ifstream file(ORVA_FOLDER "/tests/tables/" + table);
  EXPECT_TRUE(file.is_open()) << table;
  std::vector<std::string> rows;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') rows.push_back(line);
  }
  return rows;
}

// The names of a container's items, a blank apart.
template <class Item = OrvaSymbol>
std::string OrvaNamesOf(const LumoContainer& items) {
  std::string names;
  for (const Item* item : LumoItems<Item>(items)) {
    names += (names.empty() ? "" : " ") + std::string(item->GetName());
  }
  return names;
}

// A new raw string as a text, "(null)" for null; the raw string is deleted.
inline std::string OrvaTake(char* text) {
  const std::string copy = text == nullptr ? "(null)" : text;
  LumoRawString::DeleteIfAny(text);
  return copy;
}

// A number as the engine prints it.
inline std::string OrvaPrint(double x) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", x);
  return text;
}

// A model in short, as elements, and formulas of gates in the same form: "g = or(a, -h,
// atleast2(a,b,c)); h = true" defines gates,
// "#a = exponential(rate,time)" a basic event, "$rate = 0.02" a parameter.
class OrvaShortModel {
 public:
  explicit OrvaShortModel(const std::string& text) : _text(text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\n'; };
    _text.erase(std::remove_if(_text.begin(), _text.end(), isBlank), _text.end());
    for (; _i < _text.size(); ++_i) {
      const char kind = _text[_i];
      _isFormula = kind != '#' && kind != '$';
      if (!_isFormula) ++_i;
      const std::string element = kind == '#'   ? "define-basic-event"
                                  : kind == '$' ? "define-parameter"
                                                : "define-gate";
      const std::string name = _ReadUntil("=");
      ++_i;
      _elements += "<" + element + " name=\"" + name + "\">" + _ReadTerm() + "</" + element + ">\n";
    }
  }
  const std::string& GetElements() const { return _elements; }

  static std::string Write(const OrvaGate* gate) {
    if (gate == nullptr) return "undefined";
    if (gate->IsConstant()) return gate->GetConstantValue() ? "true" : "false";
    if (gate->IsEvent()) return gate->GetReferencedEvent()->GetName();
    const OrvaGate::Type type = gate->GetType();
    std::string text = OrvaGate::GetFunctor(type);
    if (type == OrvaGate::ATLEAST || type == OrvaGate::CARDINALITY) {
      text += std::to_string(gate->GetMin());
    }
    if (type == OrvaGate::CARDINALITY) text += "-";
    if (type == OrvaGate::ATMOST || type == OrvaGate::CARDINALITY) {
      text += std::to_string(gate->GetMax());
    }
    char separator = '(';
    if (gate->GetNumberOfChildren() == 0) text += separator;
    for (const OrvaGate* child = gate->GetFirstChild(); child != nullptr;
         child = child->GetNextSibling()) {
      EXPECT_EQ(child->GetParent(), gate);
      text += std::exchange(separator, ',') + Write(child);
    }
    return text + ")";
  }

 private:
  std::string _ReadUntil(const char* ends) {
    const std::size_t start = _i;
    _i = std::min(_text.find_first_of(ends, start), _text.size());
    return _text.substr(start, _i - start);
  }
  std::string _ReadTerm() {
    std::string word = _ReadUntil("(),;");
    if (_i < _text.size() && _text[_i] == '(') return _ReadOperator(word);
    const std::string value = " value=\"" + word + "\"/>";
    if (word == "true" || word == "false") return (_isFormula ? "<constant" : "<bool") + value;
    if (_isFormula && word[0] == '-') return "<not><event name=\"" + word.substr(1) + "\"/></not>";
    if (_isFormula) return "<event name=\"" + word + "\"/>";
    if (word == "time") return "<mission-time/>";
    if (word.find_first_not_of("-.e0123456789") != std::string::npos) {
      return "<parameter name=\"" + word + "\"/>";
    }
    return (word.find_first_of(".e") == std::string::npos ? "<int" : "<float") + value;
  }
  // Thresholds stand behind an operator: atleast2, atmost1, cardinality1-2.
  std::string _ReadOperator(std::string name) {
    std::string attributes, children;
    const std::size_t digits = name.find_first_of("0123456789");
    if (_isFormula && digits != std::string::npos) {
      const std::string bounds = name.substr(digits);
      name.resize(digits);
      if (name != "atmost") attributes = " min=\"" + std::to_string(std::stoi(bounds)) + "\"";
      if (name != "atleast") {
        attributes += " max=\"" + bounds.substr(bounds.find('-') + 1) + "\"";
      }
    }
    do {
      ++_i;  // "(" or ","
      if (_text[_i] != ')') children += _ReadTerm();
    } while (_text[_i] == ',');
    ++_i;
    return "<" + name + attributes + ">" + children + "</" + name + ">";
  }

  std::string _text, _elements;
  std::size_t _i = 0;
  bool _isFormula = true;
};

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

  // Both must not fail.
  void Define(const std::string& shortModel) {
    EXPECT_EQ(Load(OrvaShortModel(shortModel).GetElements()), 0) << GetErrors() << shortModel;
  }
  void MustRun(const std::string& commands) { EXPECT_EQ(Run(commands), 0) << GetErrors(); }

  // What a file holds; empty when there is none.
  static std::string ReadFile(const std::string& name) {
    std::ifstream file(name);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }
  // The fields of its rows, tabs apart.
  static std::vector<std::vector<std::string>> ReadTable(const std::string& name) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(ReadFile(name));
    for (std::string line; std::getline(lines, line);) {
      std::istringstream fields(line);
      rows.emplace_back();
      for (std::string field; std::getline(fields, field, '\t');) rows.back().push_back(field);
    }
    return rows;
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

// Gives a system its variables, in the order given, and one equation per row "left k literals".
inline void OrvaFillSystem(OrvaSystem& system, const std::string& names,
                           const std::vector<std::string>& rows) {
  int n = 0;
  for (const std::string& name : OrvaSplit(names)) system.SetVariable(n++, name.c_str());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::vector<std::string> words = OrvaSplit(rows[i]);
    OrvaEquation* equation = system.GetEquation(static_cast<int>(i));
    equation->SetMin(std::stoi(words[1]));
    equation->CreateFaninTable(static_cast<int>(words.size()) - 2);
    for (std::size_t j = 2; j < words.size(); ++j) {
      const bool isPositive = words[j][0] != '-';
      equation->SetFanin(static_cast<int>(j) - 2,
                         system.GetVariable(words[j].c_str() + (isPositive ? 0 : 1)), isPositive);
    }
    OrvaVariable* left = system.GetVariable(words[0].c_str());
    equation->SetFanout(left);
    left->SetDefinition(equation);
  }
  system.BuildListsOfOccurrences();
}
