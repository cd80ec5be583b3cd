#pragma once

// The words of the reader's messages. A user supplies other words by deriving from this class.
class LumoXMLParserMessenger {
 public:
  enum MessageType : int { LINE = 0, SYNTAX_ERROR = 1, ERROR = 2, WARNING = 3 };

  enum SyntaxError : int {
    UNEXPECTED_END_OF_FILE = 1001,
    CHAR_EXPECTED = 1002,
    QUOTE_EXPECTED = 1003,
    ILL_FORMED_HEADER = 1004,
    DASH_EXPECTED = 1005,
    ILL_FORMED_CDATA_SECTION = 1006,
    EQUAL_EXPECTED = 1007,
    ILL_FORMED_ATTRIBUTE_NAME = 1008,
    CLOSING_BRACKET_EXPECTED = 1009,  // never raised
    NO_OPENING_TAG = 1010,
    TAGS_DO_NOT_CORRESPOND = 1011,
    ILL_FORMED_TAG_NAME = 1012,
    NON_CLOSED_TAG = 1013,
    TOO_MANY_OPEN_ELEMENTS = 1014,
    NULL_CHARACTER = 1015,
  };

  LumoXMLParserMessenger();
  virtual ~LumoXMLParserMessenger();
  LumoXMLParserMessenger(const LumoXMLParserMessenger&) = delete;
  LumoXMLParserMessenger& operator=(const LumoXMLParserMessenger&) = delete;

  // The word of a message type; null for any other code.
  virtual const char* GetMessageType(int type) const;
  // The text of a syntax error, ending with a newline; null for any other code.
  virtual const char* GetMessageText(int code) const;

 private:
  static const char* const _messageTypes[];
  static const char* const _syntaxErrorMessages[];
};
