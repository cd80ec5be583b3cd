// One straight scan: every byte is read once, and what comes next is always told by one character.
// Each step below reads one construct of the dialect, begins where the one before it ended, and
// makes what it reads the one token, from which terms and attributes are copied.
//
// The file comes in blocks, and the token is a piece of the buffer: a run of ordinary characters is
// found by their classes and left where it is. What of a token is dropped or changed, blanks for
// the most part, never makes it longer, so that it is closed up in place. When the block ends, the
// token moves to the front of the buffer and the next block is read behind it.
//
// Elements do not wait on the machine's stack but on one of their own, innermost on top; an element
// joins its parent when it is closed. Terms join the innermost element as they come, so that all
// children are in the order of the text. What is open when an error ends the scan belongs to nobody
// else and is deleted from that stack.
//
// The first error sets the flag, and every loop ends at it: a step that has called another one
// looks at the flag before it uses the token. There is no way to go on after an error, and no need
// for one, since a file with an error gives no document.

#include "xml/LumoXMLParser.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <string>

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoFileStream.h"
#include "support/text/LumoRawString.h"
#include "xml/LumoXMLDocument.h"
#include "xml/LumoXMLParserMessenger.h"
#include "xml/LumoXMLPrinter.h"

using Messenger = LumoXMLParserMessenger;

namespace {

constexpr std::size_t BUFFER_SIZE = 16384;
constexpr const char* CDATA_KEYWORD = "CDATA";

// The last three are what stands for itself in a value, in a text and between other marks: not the
// end of the line, which is counted, nor the null character, which is a fault.
enum CharClass : unsigned char {
  BLANK = 1,
  LETTER = 2,
  NAME = 4,
  IN_VALUE = 8,
  IN_TEXT = 16,
  IN_COMMENT = 32,
};

// The classes of every byte; the end of the file is in none.
constexpr std::array<unsigned char, 256> MakeCharClasses() {
  std::array<unsigned char, 256> classes{};
  for (const char c : {' ', '\t', '\n', '\v', '\f', '\r'}) {
    classes[static_cast<unsigned char>(c)] = BLANK;
  }
  for (const char c : {'_', '-', ':', '.'}) classes[static_cast<unsigned char>(c)] = NAME;
  for (unsigned char c = '0'; c <= '9'; ++c) classes[c] = NAME;
  for (unsigned char c = 'a'; c <= 'z'; ++c) classes[c] = LETTER | NAME;
  for (unsigned char c = 'A'; c <= 'Z'; ++c) classes[c] = LETTER | NAME;
  for (unsigned c = 1; c < 256; ++c) {
    const bool isBlank = classes[c] == BLANK;
    if (c != '\n' && c != '"') classes[c] |= IN_VALUE;
    if (c != '<' && !isBlank) classes[c] |= IN_TEXT;
    if (c != '\n' && c != '>' && c != '-') classes[c] |= IN_COMMENT;
  }
  return classes;
}

constexpr std::array<unsigned char, 256> CHAR_CLASSES = MakeCharClasses();

bool IsOfClass(int c, int charClass) {
  return c != EOF && (CHAR_CLASSES[static_cast<std::size_t>(c)] & charClass) != 0;
}
bool IsBlank(int c) { return IsOfClass(c, BLANK); }
bool IsLetter(int c) { return IsOfClass(c, LETTER); }

// Messages have room for arguments of any length.
std::string Compose(const char* format, const char* argument) {
  std::string text;
  for (const char* rest = format;;) {
    const char* place = std::strstr(rest, "%s");
    if (place == nullptr) return text + rest;
    text.append(rest, place);
    text += argument;
    rest = place + 2;
  }
}

}  // namespace

LumoXMLParser::LumoXMLParser()
    : _defaultErrorStream(std::make_unique<LumoFileStream>(false, stderr)) {
  _openElements.reserve(MAXIMUM_NUMBER_OF_OPEN_ELEMENTS);
  LumoMemoryManager::TraceNew(this, "LumoXMLParser");
}

LumoXMLParser::~LumoXMLParser() {
  LumoRawString::DeleteIfAny(_inputFileName);
  LumoMemoryManager::TraceDelete(this, "LumoXMLParser");
}

LumoStream* LumoXMLParser::GetErrorStream() const {
  return _errorStream != nullptr ? _errorStream : _defaultErrorStream.get();
}

LumoXMLParserMessenger* LumoXMLParser::GetMessenger() {
  if (!_messenger) _messenger = std::make_unique<LumoXMLParserMessenger>();
  return _messenger.get();
}

LumoXMLPrinter* LumoXMLParser::GetPrinter() {
  if (!_printer) _printer = std::make_unique<LumoXMLPrinter>();
  return _printer.get();
}

// Characters. A read error counts as the end of the file.

int LumoXMLParser::_GetChar() {
  const int c = _LookCharAhead();
  if (c == EOF) return EOF;
  ++_next;
  if (c == '\n') IncrementLineNumber();
  return c;
}

int LumoXMLParser::_LookCharAhead() {
  _isAtEndOfFile = _next == _end && !_FillBuffer();
  return _isAtEndOfFile ? EOF : static_cast<unsigned char>(*_next);
}

void LumoXMLParser::_ParseSpaces() {
  while (IsBlank(_LookCharAhead())) _GetChar();
}

// False at the end of the file. A token that fills half of the buffer doubles it.
bool LumoXMLParser::_FillBuffer() {
  assert(_file != nullptr && _next == _end);
  if (2 * _tokenLength >= _buffer.size()) {
    std::vector<char> larger(std::max(BUFFER_SIZE, 2 * _buffer.size()));
    if (_tokenLength > 0) std::memcpy(larger.data(), _token, _tokenLength);
    _buffer = std::move(larger);
  } else if (_tokenLength > 0) {
    std::memmove(_buffer.data(), _token, _tokenLength);
  }
  _token = _buffer.data();
  _next = _token + _tokenLength;
  _end = _next + std::fread(_next, 1, _buffer.size() - _tokenLength, _file);
  return _next != _end;
}

// The token: it ends before the next character, at the latest. What was read behind it is lost with
// the block, so that a character that may be part of it is appended at once.

void LumoXMLParser::_BeginToken() {
  _token = _next;
  _tokenLength = 0;
}

// A character that has been read. A text would end at a null character, and two names could become
// one.
void LumoXMLParser::_AppendToToken(int c) {
  if (c == '\0' && !_parseError) _RaiseSyntaxError(Messenger::NULL_CHARACTER);
  assert(_token + _tokenLength < _next);
  _token[_tokenLength++] = static_cast<char>(c);
}

// Reads on while the characters are of a class that has no ends of lines.
void LumoXMLParser::_AppendWhile(int charClass) {
  for (bool isAtEnd = false; !isAtEnd;) {
    char* start = _next;
    while (_next != _end && IsOfClass(static_cast<unsigned char>(*_next), charClass)) ++_next;
    const auto length = static_cast<std::size_t>(_next - start);
    char* place = _token + _tokenLength;
    if (place != start) std::memmove(place, start, length);
    _tokenLength += length;
    isAtEnd = _next != _end || !_FillBuffer();
  }
}

// The file as a whole.

int LumoXMLParser::ParseFile(LumoXMLDocument* document, std::FILE* file) {
  assert(document != nullptr && file != nullptr);
  _file = file;
  _document = document;
  _isAtEndOfFile = false;
  ResetLineNumber();
  ResetParseError();
  _openElements.clear();
  document->Reset();
  _next = _end = _token = nullptr;
  _tokenLength = 0;
  _ParseHeader();
  if (!_parseError) _LookCharAhead();
  while (!_IsAtEndOfFile() && !_parseError) _ParseTerm();
  if (!_parseError && !_openElements.empty()) _RaiseSyntaxError(Messenger::NON_CLOSED_TAG);
  assert(_parseError || _openElements.empty());
  if (!_parseError) return 0;
  while (!_openElements.empty()) _DeleteTopElement();
  document->Reset();
  return 1;
}

void LumoXMLParser::_ParseHeader() {
  if (_GetChar() != '<' || _GetChar() != '?') {
    return _RaiseSyntaxError(Messenger::ILL_FORMED_HEADER);
  }
  for (bool isAfterMark = false;;) {
    const int c = _GetChar();
    if (_IsAtEndOfFile()) return _RaiseSyntaxError(Messenger::UNEXPECTED_END_OF_FILE);
    if (isAfterMark && c == '>') return;
    isAfterMark = c == '?';
  }
}

// One term, or the closing tag of an element.

void LumoXMLParser::_ParseTerm() {
  _ParseSpaces();
  if (_IsAtEndOfFile()) return;
  const int line = _lineNumber;
  if (_LookCharAhead() == '<') {
    _GetChar();
    return _ParseTag(line);
  }
  _ParseText();
  if (!_parseError) _AttachNewTerm(LumoXMLNode::TEXT, line);
}

void LumoXMLParser::_ParseTag(int line) {
  const int c = _LookCharAhead();
  if (IsLetter(c)) return _ParseOpeningTag(line);
  if (c == '!') return _ParseMarkup(line);
  if (c == '/') return _ParseClosingTag();
  _RaiseSyntaxError(Messenger::ILL_FORMED_TAG_NAME);
}

void LumoXMLParser::_ParseOpeningTag(int line) {
  _ParseName();
  if (_parseError) return;
  if (_openElements.size() == MAXIMUM_NUMBER_OF_OPEN_ELEMENTS) {
    return _RaiseSyntaxError(Messenger::TOO_MANY_OPEN_ELEMENTS);
  }
  LumoXMLArena* arena = _document->GetArena();
  LumoXMLNode* element = LumoXMLNode::NewInArena(arena, arena->NewName(_token, _tokenLength), line);
  assert(_openElements.size() < MAXIMUM_NUMBER_OF_OPEN_ELEMENTS);
  _openElements.push_back(element);
  _ParseAttributes(element);
  if (!_parseError) _ParseEndOfOpeningTag();
  if (_parseError && !_openElements.empty() && _openElements.back() == element) {
    _DeleteTopElement();
  }
}

void LumoXMLParser::_ParseAttributes(LumoXMLNode* element) {
  while (!_parseError) {
    const int c = _LookCharAhead();
    if (IsBlank(c)) {
      _GetChar();
    } else if (IsLetter(c)) {
      _ParseAttribute(element);
    } else {
      return;
    }
  }
}

void LumoXMLParser::_ParseEndOfOpeningTag() {
  const int c = _GetChar();
  if (c == '>') return;
  if (c != '/' || _GetChar() != '>') {
    return _RaiseSyntaxError(Messenger::ILL_FORMED_ATTRIBUTE_NAME);
  }
  _AttachTopElement();
}

void LumoXMLParser::_ParseClosingTag() {
  _GetChar();
  _ParseName();
  if (_parseError) return;
  _ParseSpaces();
  if (_GetChar() != '>') return _RaiseSyntaxError(Messenger::ILL_FORMED_ATTRIBUTE_NAME);
  if (_openElements.empty()) return _RaiseSyntaxError(Messenger::NO_OPENING_TAG);
  const char* name = _openElements.back()->GetName();
  if (std::strncmp(name, _token, _tokenLength) == 0 && name[_tokenLength] == '\0') {
    return _AttachTopElement();
  }
  _RaiseSyntaxError(Messenger::TAGS_DO_NOT_CORRESPOND);
  _DeleteTopElement();
}

void LumoXMLParser::_ParseMarkup(int line) {
  _GetChar();
  const bool isSection = _LookCharAhead() == '[';
  if (isSection) {
    _GetChar();
    _ParseCDATA();
  } else {
    _ParseComment();
  }
  if (!_parseError) _AttachNewTerm(isSection ? LumoXMLNode::CDATA : LumoXMLNode::COMMENT, line);
}

// Names, attributes and values: into the token.

void LumoXMLParser::_ParseName() {
  _ParseSpaces();
  if (!IsLetter(_LookCharAhead())) return _RaiseSyntaxError(Messenger::CHAR_EXPECTED);
  _BeginToken();
  _AppendWhile(NAME);
  if (_LookCharAhead() == EOF) _RaiseSyntaxError(Messenger::UNEXPECTED_END_OF_FILE);
}

void LumoXMLParser::_ParseAttribute(LumoXMLNode* element) {
  _ParseName();
  if (_parseError) return;
  LumoXMLArena* arena = _document->GetArena();
  const char* name = arena->NewName(_token, _tokenLength);
  _ParseSpaces();
  if (_GetChar() != '=') {
    // The end of the file is reported twice, and any other character as an end of the file.
    if (_IsAtEndOfFile()) _RaiseSyntaxError(Messenger::EQUAL_EXPECTED);
    return _RaiseSyntaxError(Messenger::UNEXPECTED_END_OF_FILE);
  }
  _ParseQuotedValue();
  if (!_parseError) {
    element->AddAttribute(LumoXMLAttribute::NewInArena(arena, name, _token, _tokenLength));
  }
}

void LumoXMLParser::_ParseQuotedValue() {
  _ParseSpaces();
  if (_GetChar() != '"') return _RaiseSyntaxError(Messenger::QUOTE_EXPECTED);
  _BeginToken();
  for (;;) {
    _AppendWhile(IN_VALUE);
    const int c = _GetChar();
    if (c == '"') return;
    if (c == EOF) return _RaiseSyntaxError(Messenger::UNEXPECTED_END_OF_FILE);
    _AppendToToken(c);
  }
}

// Texts, comments and sections: into the token.

// Each run of blanks becomes one single space. The "<" is left to what follows.
void LumoXMLParser::_ParseText() {
  _BeginToken();
  for (;;) {
    _AppendWhile(IN_TEXT);
    const int c = _LookCharAhead();
    if (c == '<') return;
    if (c == EOF) return _RaiseSyntaxError(Messenger::UNEXPECTED_END_OF_FILE);
    _GetChar();
    _AppendToToken(IsBlank(c) ? ' ' : c);
    if (IsBlank(c)) _ParseSpaces();
  }
}

// What follows "<!". The dashes are part of the stored text, so that a comment is written back
// between "<!" and ">".
void LumoXMLParser::_ParseComment() {
  _BeginToken();
  int c = _GetChar();
  if (c == '-') {
    _AppendToToken(c);
    return _ParseDashedComment();
  }
  for (; c != '>'; c = _GetChar()) {
    if (_IsAtEndOfFile()) return _RaiseSyntaxError(Messenger::UNEXPECTED_END_OF_FILE);
    _AppendToToken(c);
  }
}

// The closing "--" may not be followed by anything but ">": otherwise the search starts again
// after that character, so that "--->" closes nothing.
void LumoXMLParser::_ParseDashedComment() {
  if (_GetChar() != '-') return _RaiseSyntaxError(Messenger::DASH_EXPECTED);
  _AppendToToken('-');
  int dashes = 0;
  for (;;) {
    if (dashes == 0) _AppendWhile(IN_COMMENT);
    const int c = _GetChar();
    if (_IsAtEndOfFile()) return _RaiseSyntaxError(Messenger::UNEXPECTED_END_OF_FILE);
    if (dashes == 2 && c == '>') return;
    _AppendToToken(c);
    dashes = c == '-' && dashes < 2 ? dashes + 1 : 0;
  }
}

// A "]" followed by anything but "]" is stored as that character twice; "]]" followed by anything
// but ">" is stored with that character. This is the defined form.
void LumoXMLParser::_ParseCDATA() {
  _ParseSpaces();
  for (const char* expected = CDATA_KEYWORD; *expected != '\0'; ++expected) {
    if (_GetChar() != *expected) return _RaiseSyntaxError(Messenger::ILL_FORMED_CDATA_SECTION);
  }
  _ParseSpaces();
  if (_GetChar() != '[') return _RaiseSyntaxError(Messenger::ILL_FORMED_CDATA_SECTION);
  _BeginToken();
  int brackets = 0;
  for (;;) {
    const int c = _GetChar();
    if (_IsAtEndOfFile()) return _RaiseSyntaxError(Messenger::UNEXPECTED_END_OF_FILE);
    assert(brackets >= 0 && brackets <= 2);
    if (brackets == 2 && c == '>') {
      _tokenLength -= 2;
      return;
    }
    if (brackets == 1 && c != ']') _token[_tokenLength - 1] = static_cast<char>(c);
    _AppendToToken(c);
    brackets = brackets < 2 && c == ']' ? brackets + 1 : 0;
  }
}

// The open elements. An element joins its parent, or the document, when it is closed.

void LumoXMLParser::_AttachTerm(LumoXMLNode* term) {
  assert(term->GetParent() == nullptr);
  if (_openElements.empty()) {
    _document->AddRoot(term);
  } else {
    _openElements.back()->AddChild(term);
  }
}

// A term that is no element; its text is the token.
void LumoXMLParser::_AttachNewTerm(LumoXMLNode::Type type, int line) {
  _AttachTerm(LumoXMLNode::NewInArena(_document->GetArena(), type, _token, _tokenLength, line));
}

void LumoXMLParser::_AttachTopElement() {
  assert(!_openElements.empty());
  LumoXMLNode* element = _openElements.back();
  _openElements.pop_back();
  _AttachTerm(element);
}

void LumoXMLParser::_DeleteTopElement() {
  assert(!_openElements.empty());
  LumoXMLNode::Delete(_openElements.back());
  _openElements.pop_back();
}

// Reports.

void LumoXMLParser::_RaiseSyntaxError(int code) {
  _parseError = true;
  LumoStream* stream = GetErrorStream();
  if (stream == nullptr) return;
  const LumoXMLParserMessenger* messenger = GetMessenger();
  stream->Put(messenger->GetMessageType(Messenger::SYNTAX_ERROR));
  stream->Put(" [");
  if (_inputFileName != nullptr) {
    stream->Put(_inputFileName);
    stream->Put(", ");
  }
  stream->Put(messenger->GetMessageType(Messenger::LINE));
  stream->Put(" ");
  stream->Put(_lineNumber);
  stream->Put("]:\n");
  if (const char* text = messenger->GetMessageText(code)) {
    stream->Put(text);
    stream->Put("\n");
  }
  stream->Flush();
}

void LumoXMLParser::_RaiseAlert(int type, const char* text, const LumoXMLNode* node) {
  LumoStream* stream = GetErrorStream();
  if (stream == nullptr) return;
  const LumoXMLParserMessenger* messenger = GetMessenger();
  const char* word = messenger->GetMessageType(type);
  if (word != nullptr) {
    stream->Put(word);
    stream->Put(" ");
  }
  if (node != nullptr) {
    stream->Put("[");
    stream->Put(messenger->GetMessageType(Messenger::LINE));
    stream->Put(" ");
    stream->Put(node->GetLineNumber());
    stream->Put("]");
  }
  if (word != nullptr || node != nullptr) stream->Put(":\n");
  if (node != nullptr) {
    GetPrinter()->PrintTerm(node, stream);
    stream->Put("\n");
  }
  stream->Put(text);
  stream->Put("\n");
  stream->Flush();
}

void LumoXMLParser::_RaiseAlert(int type, const char* format, const char* argument,
                                const LumoXMLNode* node) {
  if (format == nullptr || argument == nullptr) return;
  _RaiseAlert(type, Compose(format, argument).c_str(), node);
}

void LumoXMLParser::RaiseError(const char* text, const LumoXMLNode* node) {
  _RaiseAlert(Messenger::ERROR, text, node);
}

void LumoXMLParser::RaiseError(const char* format, const char* argument, const LumoXMLNode* node) {
  _RaiseAlert(Messenger::ERROR, format, argument, node);
}

// Offered to users of the class; the program itself does not call what follows.

void LumoXMLParser::SetInputFileName(const char* name) {
  LumoRawString::Replace(_inputFileName, name);
}

void LumoXMLParser::SetErrorFile(std::FILE* file) {
  _defaultErrorStream.reset(file == nullptr ? nullptr : new LumoFileStream(false, file));
}

void LumoXMLParser::SetMessenger(LumoXMLParserMessenger* messenger) { _messenger.reset(messenger); }

void LumoXMLParser::SetPrinter(LumoXMLPrinter* printer) { _printer.reset(printer); }

void LumoXMLParser::RaiseWarning(const char* text, const LumoXMLNode* node) {
  _RaiseAlert(Messenger::WARNING, text, node);
}

void LumoXMLParser::RaiseWarning(const char* format, const char* argument,
                                 const LumoXMLNode* node) {
  _RaiseAlert(Messenger::WARNING, format, argument, node);
}

void LumoXMLParser::RaiseError(int code, const LumoXMLNode* node) {
  RaiseError(GetMessenger()->GetMessageText(code), node);
}

void LumoXMLParser::RaiseWarning(int code, const LumoXMLNode* node) {
  RaiseWarning(GetMessenger()->GetMessageText(code), node);
}

void LumoXMLParser::RaiseError(int code, const char* argument, const LumoXMLNode* node) {
  RaiseError(GetMessenger()->GetMessageText(code), argument, node);
}

void LumoXMLParser::RaiseWarning(int code, const char* argument, const LumoXMLNode* node) {
  RaiseWarning(GetMessenger()->GetMessageText(code), argument, node);
}
