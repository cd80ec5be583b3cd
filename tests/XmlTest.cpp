#include "OrvaTestSupport.h"
#include "support/containers/LumoFunction.h"
#include "support/values/LumoConstant.h"
#include "xml/LumoXMLParser.h"
#include "xml/LumoXMLParserMessenger.h"
#include "xml/LumoXMLPrinter.h"

namespace {

const std::string HEADER = "<?xml version=\"1.0\"?>\n";  // what follows is on line 2

// A parser with its messages kept, and the document that it fills.
class XmlTest : public testing::Test {
 protected:
  XmlTest() { _parser.SetErrorStream(_errors.Get()); }

  int Parse(const std::string& text) {
    const OrvaTextFile file(text);
    return _parser.ParseFile(&_document, file.Get());
  }
  // The first root of a text behind the header; the text must be well formed.
  const LumoXMLNode* Read(const std::string& text) {
    EXPECT_EQ(Parse(HEADER + text), 0) << text;
    EXPECT_EQ(_errors.GetText(), "") << text;
    return _document.GetFirstRoot();
  }
  std::string Print() {
    OrvaTextStream stream;
    _document.Print(stream.Get(), 2);
    return stream.GetText();
  }

  LumoXMLParser _parser;
  OrvaTextStream _errors;
  LumoXMLDocument _document;
};

std::string SyntaxError(int line, const std::string& message) {
  return "SYNTAX ERROR [line " + std::to_string(line) + "]:\n" + message + "\n\n";
}

class ForeignMessenger : public LumoXMLParserMessenger {
 public:
  const char* GetMessageType(int type) const override { return type == 0 ? "row" : nullptr; }
  const char* GetMessageText(int) const override { return "own text"; }
};

}  // namespace

TEST(LumoXMLNode, KeepsItsChildrenInOrder) {
  LumoXMLNode node(LumoXMLNode::NODE);
  LumoXMLNode* text = LumoXMLNode::NewText("abc");
  node.InsertChildInPosition(LumoXMLNode::NewNode("b"), 7);
  node.AddChild(text);
  node.InsertChildFirst(LumoXMLNode::NewComment("-- a --"));
  node.InsertChildBefore(LumoXMLNode::NewCDATA("data"), text);
  node.InsertChildInPosition(LumoXMLNode::NewNode("b"), 99);
  node.InsertChildInPosition(LumoXMLNode::NewNode("first"), -5);
  node.InsertChildInPosition(LumoXMLNode::NewNode("third"), 3);
  LumoXMLNode* stranger = LumoXMLNode::NewNode("abc");
  node.InsertChildBefore(stranger, nullptr);
  node.InsertChildBefore(stranger, &node);  // no child of this node: nothing happens
  std::string names;
  int n = 0;
  const LumoXMLNode* previous = nullptr;
  for (const LumoXMLNode* child = node.GetFirstChild(); child != nullptr;
       previous = child, child = child->GetNextSibling()) {
    names += child->GetName() + std::string("|");
    EXPECT_EQ(child->GetParent(), &node);
    EXPECT_EQ(child->GetPreviousSibling(), previous);
    EXPECT_EQ(node.GetChild(++n), child);
  }
  EXPECT_EQ(names, "first|-- a --|third|b|data|abc|b|");
  for (const int outside : {-3, 0, 8}) EXPECT_EQ(node.GetChild(outside), nullptr);
  EXPECT_EQ(node.GetNumberOfChildNodesOfName("abc"), 0);  // a text is no element
  EXPECT_EQ(node.GetNumberOfChildNodesOfName("b"), 2);
  EXPECT_EQ(node.GetChild(2, LumoXMLNode::NODE), node.GetChild(3));
  EXPECT_EQ(node.CountChildren(LumoXMLNode::CompareName, "b"), 2);
  node.DeleteDescendants();
  node.AddChild(stranger);
  EXPECT_EQ(node.GetFirstChild(), stranger);
}

TEST(LumoXMLNode, ReadsAttributesByName) {
  LumoXMLNode node(LumoXMLNode::NODE);
  node.AddAttribute("x", "yes");
  node.AddAttribute("x", "true");
  node.AddAttribute("n", -12);
  node.AddAttribute("r", 1234567.0);
  EXPECT_STREQ(node.GetAttributeValue("x"), "yes");  // the first of two
  EXPECT_FALSE(node.GetAttributeValueAsBool("x", true));
  EXPECT_TRUE(node.GetAttributeValueAsBool("absent", true));
  EXPECT_EQ(node.GetAttributeValueAsInt("n", 5), -12);
  EXPECT_EQ(node.GetAttributeValueAsInt("absent", 5), 5);
  EXPECT_EQ(node.GetAttributeValueAsDouble("r", 0.5), 1234570.0);
  LumoXMLAttribute attribute("name", 0.1);
  attribute.SetValueAsDouble(1e-20);
  EXPECT_TRUE(attribute.HasValue("1e-20") && attribute.IsDouble() && !attribute.IsInt());
  attribute.SetValueAsBool(false);
  EXPECT_TRUE(attribute.IsBool() && !attribute.GetValueAsBool());
  attribute.SetValue(attribute.GetName());
  EXPECT_EQ(attribute.CompareValue("name"), 0);
}

TEST_F(XmlTest, ReadsElementsAndAttributes) {
  const LumoXMLNode* a = Read("<a-1.x:y_z  p = \"1\"q=\"&lt; 'x'\n>\"\n/>\n\n<b></ b >\n");
  EXPECT_STREQ(a->GetName(), "a-1.x:y_z");
  EXPECT_STREQ(a->GetAttributeValue("q"), "&lt; 'x'\n>");  // as it is
  EXPECT_EQ(a->GetLineNumber(), 2);
  const LumoXMLNode* b = _document.GetLastRoot();  // a second root
  EXPECT_EQ(b->GetPreviousSibling(), a);
  EXPECT_EQ(b->GetLineNumber(), 6);
  // A second parse replaces the first and counts lines anew.
  a = Read("<a><b/>\n<c x=\"\"><d/></c>  <e/></a>");
  EXPECT_EQ(Print(), HEADER + "<a >\n  <b />\n  <c x=\"\" >\n    <d />\n  </c>\n  <e />\n</a>\n");
  EXPECT_EQ(a->GetChild(2)->GetLineNumber(), 3);
  // The header may hold anything up to its "?>", other question marks included.
  EXPECT_EQ(Parse("<? a > ? b\n?\?\?><a/>"), 0);
  EXPECT_EQ(_document.GetFirstRoot()->GetLineNumber(), 2);
}

TEST_F(XmlTest, StoresTextsCommentsAndSections) {
  const struct {
    const char* text;
    LumoXMLNode::Type type;
    const char* stored;
  } cases[] = {{"x &amp; y", LumoXMLNode::TEXT, "x &amp; y"},
               {"\n  one\n  two\n", LumoXMLNode::TEXT, "one two "},
               {"\ta\v\f\r\n b > \"c\"", LumoXMLNode::TEXT, "a b > \"c\""},
               {" \xff\xff", LumoXMLNode::TEXT, "\xff\xff"},  // byte 255 is not the end
               {"<!-- a -->", LumoXMLNode::COMMENT, "-- a --"},
               {"<!-- a ---> - b\n-- <c> -->", LumoXMLNode::COMMENT, "-- a ---> - b\n-- <c> --"},
               {"<!--\xff-->", LumoXMLNode::COMMENT, "--\xff--"},
               {"<!DOCTYPE x>", LumoXMLNode::COMMENT, "DOCTYPE x"},
               {"<![CDATA[ <a> && \n]]>", LumoXMLNode::CDATA, " <a> && \n"},
               {"<![ \n CDATA [\xff]]>", LumoXMLNode::CDATA, "\xff"},
               // The brackets of a section: a single one goes and doubles what follows it, two
               // stay, and a third one keeps the section open.
               {"<![CDATA[a]b]]>", LumoXMLNode::CDATA, "abb"},
               {"<![CDATA[]]x]]>", LumoXMLNode::CDATA, "]]x"},
               {"<![CDATA[a]]]>b]]>", LumoXMLNode::CDATA, "a]]]>b"}};
  for (const auto& [text, type, stored] : cases) {
    const LumoXMLNode* a = Read(std::string("<a>") + text + "</a>");
    ASSERT_TRUE(a != nullptr && a->GetNumberOfChildren() == 1) << text;
    EXPECT_EQ(a->GetFirstChild()->GetType(), type) << text;
    EXPECT_STREQ(a->GetFirstChild()->GetText(), stored) << text;
    EXPECT_EQ(_document.GetDocumentType(), nullptr);
  }
  const LumoXMLNode* a =
      Read("<a>\n\n  x <!--\n-->y<b v=\"\xff\xc3\xa9\"/>\n <![CDATA[\n]]> \n</a>");
  ASSERT_EQ(a->GetNumberOfChildren(), 5);
  const int lines[] = {4, 4, 5, 5, 6};
  for (int i = 1; i <= 5; ++i) EXPECT_EQ(a->GetChild(i)->GetLineNumber(), lines[i - 1]) << i;
  EXPECT_STREQ(a->GetChild(4)->GetAttributeValue("v"), "\xff\xc3\xa9");
}

// Blocks of the file end anywhere, in a name, a value, a blank or a closing mark, and what is read
// may be larger than a block. Line numbers go on.
TEST_F(XmlTest, ReadsAcrossTheEndsOfBlocks) {
  const std::string element = "<ab cd=\"e\nf\" >g \n h<!--i--j--><![CDATA[k]]l]]></ab>";
  std::string elements;
  for (int i = 0; i < 1000; ++i) elements += element;
  for (std::size_t length = 40000; length < 40000 + element.size(); ++length) {
    const std::string filler(length, 'x');
    const LumoXMLNode* root =
        Read("<" + filler + " v=\"" + filler + "\">" + elements + "</" + filler + ">");
    ASSERT_NE(root, nullptr);
    ASSERT_EQ(root->GetName() + std::string(root->GetAttributeValue("v")), filler + filler);
    ASSERT_EQ(root->GetNumberOfChildren(), 1000);
    int line = 2;
    for (const auto* node = root->GetFirstChild(); node != nullptr; node = node->GetNextSibling()) {
      ASSERT_EQ(node->GetLineNumber(), std::exchange(line, line + 2));
      ASSERT_STREQ(node->GetName(), "ab");
      ASSERT_STREQ(node->GetAttributeValue("cd"), "e\nf");
      ASSERT_STREQ(node->GetChild(1)->GetText(), "g h");
      ASSERT_STREQ(node->GetChild(2)->GetText(), "--i--j--");
      ASSERT_STREQ(node->GetChild(3)->GetText(), "k]]l");
    }
  }
}

// What was read lies in the document's memory, what is added does not, and either may be changed.
TEST_F(XmlTest, ChangesWhatWasRead) {
  Read("<a b=\"1\" c=\"2\" d=\"3\"><e/>text</a>");
  LumoXMLNode* root = _document.GetFirstRoot();
  root->SetName(root->GetName());
  root->SetName("A");
  root->FindAttribute("b")->SetValue("one");
  root->FindAttribute("b")->SetValueAsInt(7);
  root->AddAttribute("f", true);
  root->AddChild(LumoXMLNode::NewNode("g"));
  const std::unique_ptr<LumoCursor> cursor(root->NewCursorOnAttributes());
  for (cursor->ResetOnLastItem(); !cursor->IsBeforeFirstItem();) {
    const bool isKept = static_cast<LumoXMLAttribute*>(cursor->GetItem())->HasName("b");
    if (isKept) {
      cursor->Decrement();
    } else {
      LumoXMLAttribute::Delete(cursor->RemoveItemAndDecrement());
    }
  }
  root->AddAttribute("h", 8);
  root->DeleteFirstChild();
  EXPECT_EQ(Print(), "<?xml version=\"1.0\"?>\n<A b=\"7\" h=\"8\" >\ntext\n  <g />\n</A>\n");
}

TEST_F(XmlTest, RefusesNullCharacters) {
  using namespace std::string_literals;
  for (const std::string& text : {"<a><b v=\"x\0y\"/></a>"s, "<a>p\0q</a>"s, "<a><!--\0--></a>"s}) {
    EXPECT_EQ(Parse(HEADER + text), 1);
    EXPECT_NE(_errors.GetText().find("Null character\n"), std::string::npos) << text;
  }
  EXPECT_EQ(Parse(HEADER + "<a\0/>"s), 1);
  EXPECT_EQ(Parse("\0"s), 1);
}

TEST_F(XmlTest, StartsAnewAfterASyntaxError) {
  for (const char* text : {"<a/>\n</a>", "<a>\n<b></B></a>", "<a>\n<?x?></a>", "<a>\n< b/>"}) {
    EXPECT_EQ(Parse(HEADER + "<before/>" + text), 1) << text;
    EXPECT_FALSE(_document.HasChild()) << text;
    EXPECT_EQ(Parse(HEADER + "<a/>"), 0);
  }
  _parser.SetInputFileName("model.xml");
  EXPECT_EQ(Parse(HEADER + "</a>"), 1);
  EXPECT_EQ(_errors.GetText(), SyntaxError(3, "No opening tag") +
                                   SyntaxError(3, "Open and close tags do not correspond") +
                                   SyntaxError(3, "Ill formed tag name") +
                                   SyntaxError(3, "Ill formed tag name") +
                                   "SYNTAX ERROR [model.xml, line 2]:\nNo opening tag\n\n");
}

TEST_F(XmlTest, LoadsIntoADocumentAndReportsOnStandardError) {
  _document.SetDocumentType("kept");
  const std::string wrong = HEADER + "<a>\n</b>", right = HEADER + "<!-- c --><a/>";
  testing::internal::CaptureStderr();
  _document.Load(OrvaTextFile(wrong).Get());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            SyntaxError(3, "Open and close tags do not correspond"));
  EXPECT_EQ(_document.GetFirstRoot(), nullptr);
  _document.Load(OrvaTextFile(right).Get());
  EXPECT_EQ(_document.FindRoot("a"), _document.GetLastRoot());
  EXPECT_EQ(Print(), HEADER + "<!DOCTYPE kept>\n<!-- c -->\n<a />\n");
}

TEST_F(XmlTest, LaysOutAlerts) {
  const LumoXMLNode* a = Read("\n<a x=\"1\">t<b/></a>");
  const std::string element = "<a x=\"1\" >\nt\n  <b />\n</a>\n";
  std::string expected;
  _parser.RaiseError("No \\\"top\\\"", nullptr);
  expected += "ERROR :\nNo \"top\"\n";
  _parser.RaiseWarning("text", a);
  expected += "WARNING [line 3]:\n" + element + "\ntext\n";
  _parser.RaiseError("%s is %s", "x", a);
  expected += "ERROR [line 3]:\n" + element + "\nx is x\n";
  _parser.RaiseError(LumoXMLParserMessenger::NO_OPENING_TAG, nullptr);
  expected += "ERROR :\nNo opening tag\n\n";
  _parser.RaiseWarning(LumoXMLParserMessenger::NO_OPENING_TAG, "x", nullptr);
  expected += "WARNING :\nNo opening tag\n\n";
  // Nothing without a format or an argument.
  _parser.RaiseError("%s", nullptr, a);
  _parser.RaiseWarning(static_cast<const char*>(nullptr), "x", a);
  _parser.RaiseError(1, "x", a);
  EXPECT_FALSE(_parser.GetParseError());
  // A text without a type's word, in other words.
  _parser.SetMessenger(new ForeignMessenger);
  _parser.RaiseError("bare", nullptr);
  _parser.RaiseError(1, a->GetChild(2));
  expected += "bare\n[row 3]:\n<b />\n\nown text\n";
  EXPECT_EQ(_errors.GetText(), expected);
}

TEST(LumoXMLPrinter, WritesPieceByPiece) {
  OrvaTextStream text;
  LumoFileStream* stream = text.Get();
  LumoXMLPrinter printer;
  const LumoConstant nil, yes(true), number(7), real(0.5), string("s"),
      pointer(&printer, LumoFunction::DoNothing, 1);
  const LumoXMLAttribute attribute("own", "1 < \\\"2\\\"");
  printer.SetDepth(3);
  printer.PrintDocumentHeader("orva", stream);
  printer.PrintOpenTag("a", stream);
  printer.PrintOpenTagOpening("b", stream);
  printer.PrintAttribute("t", true, stream);
  printer.PrintAttribute("i", -3, stream);
  printer.PrintAttribute("r", 1234567.0, stream);
  for (const LumoConstant* value : {&nil, &yes, &number, &real, &string, &pointer}) {
    printer.PrintAttribute("k", value, stream);
  }
  printer.PrintAttribute(&attribute, stream);  // nothing is escaped
  printer.PrintOpenTagEnding(stream);
  printer.PrintCData("data", stream);
  printer.SetIndentation("\t");
  printer.PrintTag("d", stream);
  printer.PrintCloseTag("a", stream);
  EXPECT_EQ(text.GetText(), HEADER + R"(<!DOCTYPE orva>
<a >
  <b t="true" i="-3" r="1.23457e+06" k="nil" k="true" k="7" k="0.5" k="s" k="nil" own="1 < "2"" />
<![CDATA
data]]>
)" + "\t<d />\n</a>\n");
}

TEST_F(XmlTest, PrintsWholeTrees) {
  LumoXMLPrinter printer;
  OrvaTextStream text;
  const LumoXMLNode* a = Read("<a><b/>text<!-- c --><![CDATA[x]]></a>");
  const std::string printed = "<a >\n  <b />\ntext\n  <!-- c -->\n<![CDATA\nx]]>\n</a>\n";
  EXPECT_EQ(Print(), HEADER + printed);
  printer.PrintTerm(&_document, text.Get());  // nothing
  printer.PrintTerm(a, text.Get());
  printer.PrintDocument(&_document, text.Get());
  EXPECT_EQ(text.GetText(), printed + HEADER + printed);
}
