#include "xml/LumoXMLParserMessenger.h"

#include <iterator>

#include "support/memory/LumoMemoryManager.h"

const char* const LumoXMLParserMessenger::_messageTypes[] = {"line", "SYNTAX ERROR", "ERROR",
                                                             "WARNING"};

// In the order of the codes, from UNEXPECTED_END_OF_FILE on.
const char* const LumoXMLParserMessenger::_syntaxErrorMessages[] = {
    "Unexpected end of file\n",
    "A char was expected\n",
    "A '\"' was expected\n",
    "Ill formed header\n",
    "A '-' was expected\n",
    "Ill formed CDATA section\n",
    "A '=' was expected\n",
    "Ill formed attribute name\n",
    "A '>' was expected\n",
    "No opening tag\n",
    "Open and close tags do not correspond\n",
    "Ill formed tag name\n",
    "Non closed tag(s)\n",
    "Too many open elements\n",
    "Null character\n",
};

LumoXMLParserMessenger::LumoXMLParserMessenger() {
  LumoMemoryManager::TraceNew(this, "LumoXMLParserMessenger");
}

LumoXMLParserMessenger::~LumoXMLParserMessenger() {
  LumoMemoryManager::TraceDelete(this, "LumoXMLParserMessenger");
}

const char* LumoXMLParserMessenger::GetMessageType(int type) const {
  const bool isKnown = type >= 0 && type < static_cast<int>(std::size(_messageTypes));
  return isKnown ? _messageTypes[type] : nullptr;
}

const char* LumoXMLParserMessenger::GetMessageText(int code) const {
  const int i = code - UNEXPECTED_END_OF_FILE;
  const bool isKnown = i >= 0 && i < static_cast<int>(std::size(_syntaxErrorMessages));
  return isKnown ? _syntaxErrorMessages[i] : nullptr;
}
