#pragma once

#include <climits>
#include <cstdio>
#include <memory>
#include <vector>

#include "xml/LumoXMLNode.h"

class LumoFileStream;
class LumoStream;
class LumoXMLDocument;
class LumoXMLParserMessenger;
class LumoXMLPrinter;

// Reads XML files into documents, in one pass over the bytes, and reports syntax errors and its
// users' alerts in one layout.
//
// The dialect is small: a mandatory header, elements with double-quoted attributes, text, comments
// and CDATA sections. No entity or character reference is interpreted, a document type declaration
// is kept as a comment, and names are ASCII; other bytes are ordinary characters in texts and
// values. At most MAXIMUM_NUMBER_OF_OPEN_ELEMENTS elements may be open at once.
class LumoXMLParser {
 public:
  static constexpr std::size_t MAXIMUM_NUMBER_OF_OPEN_ELEMENTS = 1024;

  // Messages go to standard error until told otherwise.
  LumoXMLParser();
  ~LumoXMLParser();
  LumoXMLParser(const LumoXMLParser&) = delete;
  LumoXMLParser& operator=(const LumoXMLParser&) = delete;

  // Reads a whole file in place of the document's contents. Returns 0, or 1 after a syntax error:
  // it has been reported, and the document is empty.
  int ParseFile(LumoXMLDocument* document, std::FILE* file);

  LumoStream* GetErrorStream() const;
  LumoXMLParserMessenger* GetMessenger();
  LumoXMLPrinter* GetPrinter();

  void ResetParseError() { _parseError = false; }
  // Lines beyond the range of integers are not counted.
  void IncrementLineNumber() { _lineNumber += static_cast<int>(_lineNumber < INT_MAX); }
  void ResetLineNumber() { _lineNumber = 1; }

  // Alerts of the parser's users. With an element, the report gives its line and prints it with
  // its subtree; without (null), it is the message alone. The format forms put the argument in
  // the place of each "%s" and write nothing when the format or the argument is null. The code
  // forms take their text from the messenger. Alerts do not set the parse-error flag.
  void RaiseError(const char* text, const LumoXMLNode* node);
  void RaiseError(const char* format, const char* argument, const LumoXMLNode* node);

  // Offered to users of the class; the program itself does not call what follows.

  // The name that syntax errors give the file; null for none. Copied, and kept between files.
  void SetInputFileName(const char* name);
  const char* GetInputFileName() const { return _inputFileName; }
  // Where messages go: a file (null for nowhere), or a stream that is not owned and goes first.
  void SetErrorFile(std::FILE* file);
  void SetErrorStream(LumoStream* stream) { _errorStream = stream; }
  // Take ownership.
  void SetMessenger(LumoXMLParserMessenger* messenger);
  void SetPrinter(LumoXMLPrinter* printer);

  bool GetParseError() const { return _parseError; }
  int GetLineNumber() const { return _lineNumber; }
  void DecrementLineNumber() { --_lineNumber; }

  void RaiseWarning(const char* text, const LumoXMLNode* node);
  void RaiseWarning(const char* format, const char* argument, const LumoXMLNode* node);
  void RaiseError(int code, const LumoXMLNode* node);
  void RaiseWarning(int code, const LumoXMLNode* node);
  void RaiseError(int code, const char* argument, const LumoXMLNode* node);
  void RaiseWarning(int code, const char* argument, const LumoXMLNode* node);

 private:
  int _GetChar();
  int _LookCharAhead();
  bool _IsAtEndOfFile() const { return _isAtEndOfFile; }
  void _ParseSpaces();
  bool _FillBuffer();
  void _BeginToken();
  void _AppendToToken(int c);
  void _AppendWhile(int charClass);

  void _ParseHeader();
  void _ParseTerm();
  void _ParseTag(int line);
  void _ParseOpeningTag(int line);
  void _ParseAttributes(LumoXMLNode* element);
  void _ParseEndOfOpeningTag();
  void _ParseClosingTag();
  void _ParseMarkup(int line);
  void _ParseName();
  void _ParseAttribute(LumoXMLNode* element);
  void _ParseQuotedValue();
  void _ParseText();
  void _ParseComment();
  void _ParseDashedComment();
  void _ParseCDATA();
  void _AttachTerm(LumoXMLNode* term);
  void _AttachNewTerm(LumoXMLNode::Type type, int line);
  void _AttachTopElement();
  void _DeleteTopElement();

  void _RaiseSyntaxError(int code);
  void _RaiseAlert(int type, const char* text, const LumoXMLNode* node);
  void _RaiseAlert(int type, const char* format, const char* argument, const LumoXMLNode* node);

  std::FILE* _file = nullptr;
  std::vector<char> _buffer;
  char* _next = nullptr;  // the next character in the buffer
  char* _end = nullptr;
  char* _token = nullptr;  // the last name, value, text, comment or section read
  std::size_t _tokenLength = 0;
  bool _isAtEndOfFile = false;
  char* _inputFileName = nullptr;
  int _lineNumber = 1;
  std::unique_ptr<LumoFileStream> _defaultErrorStream;
  LumoStream* _errorStream = nullptr;
  LumoXMLDocument* _document = nullptr;
  std::vector<LumoXMLNode*> _openElements;
  bool _parseError = false;
  std::unique_ptr<LumoXMLParserMessenger> _messenger;
  std::unique_ptr<LumoXMLPrinter> _printer;
};
