#pragma once

#include <cstddef>
#include <span>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "printer/OrvaPrinter.h"
#include "support/text/LumoRawString.h"
#include "support/text/LumoStream.h"
#include "xml/LumoXMLNode.h"

// What the source files of the commands share.
//
// Texts of messages, here and there, are defined to the letter, with their spelling, their
// punctuation and the line ends that some have and others lack.

// An element and its handler: a row of a table of commands.
struct OrvaInterpreter::Command {
  const char* element;
  void (OrvaInterpreter::*download)(int& error, const LumoXMLNode* command);
};

// A table of commands, what is said of any other element, and whether that is shown.
struct OrvaInterpreter::Commands {
  std::span<const Command> rows;
  const char* unknownCommand;
  bool showsElement = true;
};

// An option and the switch of the printer that it sets.
struct OrvaInterpreter::Switch {
  const char* option;
  bool OrvaPrinter::*isOn;
};

// A word that an option may have, and what it stands for.
template <class Value>
struct OrvaWord {
  const char* word;
  Value value;
};

// The row of a table of words, null for any other text and for none.
template <class Value, std::size_t N>
const OrvaWord<Value>* OrvaFindWord(const OrvaWord<Value> (&words)[N], const char* text) {
  for (const OrvaWord<Value>& row : words) {
    if (LumoRawString::IsEqual(text, row.word)) return &row;
  }
  return nullptr;
}

// An option that is set to nothing is the empty text in messages and names.
inline const char* OrvaTextOrEmpty(const char* text) { return text == nullptr ? "" : text; }

template <class Value, std::size_t N>
Value OrvaInterpreter::_DownloadWordInCommand(int& error, const LumoXMLNode* command,
                                              const char* name, const OrvaWord<Value> (&words)[N],
                                              const char* unknownWord) {
  const char* text;
  if (!_DownloadOptionInCommand(command, name, text)) return words[0].value;
  if (const OrvaWord<Value>* row = OrvaFindWord(words, text)) return row->value;
  _Report(error, unknownWord, OrvaTextOrEmpty(text), command);
  return words[0].value;
}

template <class Write>
void OrvaInterpreter::_WriteOutput(int& error, const LumoXMLNode* command, Write write) {
  if (error != 0 || _watcher != nullptr) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  write(stream);
  _CloseOutputStream(error, stream);
}

template <class Write>
void OrvaInterpreter::_WriteOutput(int& error, const LumoXMLNode* command, OrvaHandle::Type type,
                                   Write write) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, type, handle);
  _WriteOutput(error, command, [&](LumoStream* stream) { write(handle, stream); });
}
