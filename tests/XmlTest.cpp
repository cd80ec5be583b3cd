#include <memory>
#include <vector>

#include "OrvaTestSupport.h"
#include "support/containers/LumoFunction.h"
#include "support/memory/LumoMemoryManager.h"
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
  EXPECT_FALSE(node.HasChild());
  EXPECT_EQ(node.GetChild(1), nullptr);
  LumoXMLNode* b = LumoXMLNode::NewNode("b");
  LumoXMLNode* text = LumoXMLNode::NewText("abc");
  node.InsertChildInPosition(b, 7);
  node.AddChild(text);
  node.InsertChildFirst(LumoXMLNode::NewComment("-- a --"));
  node.InsertChildBefore(LumoXMLNode::NewCDATA("data"), text);
  node.InsertChildInPosition(LumoXMLNode::NewNode("b"), 99);
  node.InsertChildInPosition(LumoXMLNode::NewNode("first"), -5);
  node.InsertChildInPosition(LumoXMLNode::NewNode("third"), 3);
  LumoXMLNode* stranger = LumoXMLNode::NewNode("abc");
  node.InsertChildBefore(stranger, nullptr);
  node.InsertChildBefore(stranger, &node);  // no child of this node: nothing happens
  const std::vector<std::string> names = {"first", "-- a --", "third", "b", "data", "abc", "b"};
  int n = 0;
  const LumoXMLNode* previous = nullptr;
  for (const LumoXMLNode* child = node.GetFirstChild(); child != nullptr;
       previous = child, child = child->GetNextSibling()) {
    ASSERT_LT(n, 7);
    EXPECT_EQ(child->GetName(), names[static_cast<std::size_t>(n)]);
    EXPECT_EQ(child->GetParent(), &node);
    EXPECT_EQ(child->GetPreviousSibling(), previous);
    EXPECT_EQ(node.GetChild(++n), child);
  }
  EXPECT_EQ(n, 7);
  EXPECT_EQ(node.GetLastChild(), previous);
  for (const int outside : {-3, 0, 8}) EXPECT_EQ(node.GetChild(outside), nullptr);
  EXPECT_EQ(node.GetNumberOfChildNodes(), 4);
  EXPECT_EQ(node.GetNumberOfChildNodesOfName("b"), 2);
  EXPECT_EQ(node.GetNumberOfChildNodesOfName("abc"), 0);  // a text is no element
  EXPECT_EQ(node.GetChildNode(3), b);
  EXPECT_EQ(node.GetChild(1, LumoXMLNode::TEXT), text);
  EXPECT_EQ(node.GetChild(2, LumoXMLNode::TEXT), nullptr);
  EXPECT_EQ(node.FindChild("b"), b);
  EXPECT_EQ(node.FindChild("abc"), text);  // found by what it says
  EXPECT_FALSE(node.HasChild("B"));
  EXPECT_EQ(node.CountChildren(LumoXMLNode::CompareName, "b"), 2);
  LumoList chosen;
  node.CollectChildren(LumoXMLNode::CompareName, "b", &chosen);
  EXPECT_EQ(chosen.GetFirstItem(), b);
  EXPECT_EQ(chosen.GetNumberOfItems(), 2);
  EXPECT_EQ(b->GetText(), nullptr);
  EXPECT_STREQ(text->GetText(), "abc");
  EXPECT_FALSE(text->IsNodeOfName("abc"));
  EXPECT_TRUE(stranger->IsNodeOfName("abc"));
  EXPECT_EQ(stranger->CompareNames(text), 0);
  node.DeleteDescendants();
  node.AddChild(stranger);
  EXPECT_EQ(node.GetFirstChild(), stranger);
  stranger->SetName("renamed");
  EXPECT_STREQ(stranger->GetName(), "renamed");
}

TEST(LumoXMLNode, ReadsAttributesByName) {
  const std::unique_ptr<LumoXMLNode> node(LumoXMLNode::NewNode("a"));
  EXPECT_FALSE(node->HasAttribute());
  node->AddAttribute("x", "yes");
  node->AddAttribute("x", "true");
  node->AddAttribute("n", -12);
  node->AddAttribute("r", 1234567.0);
  node->AddAttribute("b", true);
  EXPECT_STREQ(node->GetAttributeValue("x"), "yes");  // the first of two
  EXPECT_EQ(node->GetAttributeValue("X"), nullptr);
  EXPECT_FALSE(node->GetAttributeValueAsBool("x", true));
  EXPECT_TRUE(node->GetAttributeValueAsBool("absent", true));
  EXPECT_TRUE(node->GetAttributeValueAsBool("b", false));
  EXPECT_EQ(node->GetAttributeValueAsInt("n", 5), -12);
  EXPECT_EQ(node->GetAttributeValueAsInt("x", 5), 0);
  EXPECT_EQ(node->GetAttributeValueAsInt("absent", 5), 5);
  EXPECT_STREQ(node->GetAttributeValue("r"), "1.23457e+06");
  EXPECT_EQ(node->GetAttributeValueAsDouble("r", 0.5), 1234570.0);
  EXPECT_EQ(node->GetAttributeValueAsDouble("absent", 0.5), 0.5);

  LumoXMLAttribute attribute("name", 0.1);
  EXPECT_TRUE(attribute.HasValue("0.1"));
  attribute.SetValueAsDouble(1e-20);
  EXPECT_TRUE(attribute.HasValue("1e-20"));
  EXPECT_TRUE(attribute.IsDouble());
  EXPECT_FALSE(attribute.IsInt());
  attribute.SetValueAsInt(-7);
  EXPECT_TRUE(attribute.IsInt());
  attribute.SetValueAsBool(false);
  EXPECT_TRUE(attribute.HasValue("false"));
  EXPECT_TRUE(attribute.IsBool());
  attribute.SetValue("True");
  EXPECT_FALSE(attribute.IsBool() || attribute.GetValueAsBool());
  attribute.SetValue(attribute.GetName());
  EXPECT_EQ(attribute.CompareValue("name"), 0);
  EXPECT_GT(attribute.CompareName("nam"), 0);
}

TEST_F(XmlTest, ReadsElementsAndAttributes) {
  const LumoXMLNode* a = Read("<a-1.x:y_z  p = \"1\"q=\"&lt; 'x'\n>\"\n/>\n\n<b></ b >\n");
  EXPECT_STREQ(a->GetName(), "a-1.x:y_z");
  EXPECT_EQ(a->GetAttributes().GetNumberOfItems(), 2);
  EXPECT_STREQ(a->GetAttributeValue("p"), "1");
  EXPECT_STREQ(a->GetAttributeValue("q"), "&lt; 'x'\n>");  // as it is
  EXPECT_EQ(a->GetLineNumber(), 2);
  const LumoXMLNode* b = _document.GetLastRoot();  // a second root
  EXPECT_EQ(b->GetPreviousSibling(), a);
  EXPECT_EQ(b->GetLineNumber(), 6);
  EXPECT_FALSE(b->HasChild());
  // A second parse replaces the first and counts lines anew.
  a = Read("<a><b/>\n<c x=\"\"><d/></c>  <e/></a>");
  EXPECT_EQ(_document.GetNumberOfChildren(), 1);
  EXPECT_EQ(Print(), HEADER + "<a >\n  <b />\n  <c x=\"\" >\n    <d />\n  </c>\n  <e />\n</a>\n");
  EXPECT_EQ(a->GetChild(2)->GetLineNumber(), 3);
  // The header may hold anything up to its "?>", other question marks included.
  EXPECT_EQ(Parse("<? a > ? b\n?"
                  "?"
                  "?><a/>"),
            0);
  EXPECT_EQ(_document.GetFirstRoot()->GetLineNumber(), 2);
  EXPECT_EQ(Parse("<?"
                  "?>"),
            0);
  EXPECT_EQ(_document.GetFirstRoot(), nullptr);
}

TEST_F(XmlTest, StoresTextsCommentsAndSections) {
  const struct {
    const char* text;
    LumoXMLNode::Type type;
    const char* stored;
  } cases[] = {{"x &amp; y", LumoXMLNode::TEXT, "x &amp; y"},
               {"\n  one\n  two\n", LumoXMLNode::TEXT, "one two "},
               {"a  b \n", LumoXMLNode::TEXT, "a b "},
               {"\ta\v\f\r\n b > \"c\"", LumoXMLNode::TEXT, "a b > \"c\""},
               {"\xc3\xa9 \xa0\x85", LumoXMLNode::TEXT, "\xc3\xa9 \xa0\x85"},
               {" \xff\xff", LumoXMLNode::TEXT, "\xff\xff"},  // byte 255 is not the end
               {"<!-- a -->", LumoXMLNode::COMMENT, "-- a --"},
               {"<!---->", LumoXMLNode::COMMENT, "----"},
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

TEST_F(XmlTest, RefusesNullCharacters) {
  using namespace std::string_literals;
  for (const std::string& text : {"<a><b v=\"x\0y\"/></a>"s, "<a>p\0q</a>"s, "<a><!--\0--></a>"s}) {
    EXPECT_EQ(Parse(HEADER + text), 1);
    EXPECT_NE(_errors.GetText().find("Null character\n"), std::string::npos) << text;
  }
  EXPECT_EQ(Parse(HEADER + "<a\0/>"s), 1);
  EXPECT_EQ(Parse("\0"s), 1);
}

TEST_F(XmlTest, ReportsSyntaxErrors) {
  const char* const end = "Unexpected end of file";
  const char* const illFormedTag = "Ill formed attribute name";
  const struct {
    const char* text;  // behind the header
    int line;
    const char* message;
  } cases[] = {{"<a/>\n\nx\n", 5, end},
               {"<a", 2, end},
               {"<a x", 2, end},
               {"<a x y=\"1\"/>", 2, end},  // no "=" after a name
               {"<a x=\"1\n\n", 4, end},
               {"<a>text\n", 3, end},
               {"<!-- --", 2, end},
               {"<!DOCTYPE", 2, end},
               {"<![CDATA[]]", 2, end},
               {"<a></1>", 2, "A char was expected"},
               {"<a></>", 2, "A char was expected"},
               {"<a x='1'/>", 2, "A '\"' was expected"},
               {"<a x=\n1/>", 3, "A '\"' was expected"},
               {"<!-x-->", 2, "A '-' was expected"},
               {"<![DATA[x]]>", 2, "Ill formed CDATA section"},
               {"<![CDATA x]]>", 2, "Ill formed CDATA section"},
               {"<a b=\"1\"/ >", 2, illFormedTag},
               {"<a 1=\"x\"/>", 2, illFormedTag},
               {"<a x=\"1\"\n=/>", 3, illFormedTag},
               {"<a></a b>", 2, illFormedTag},
               {"</a>", 2, "No opening tag"},
               {"<a/>\n</a>", 3, "No opening tag"},
               {"<a></b>", 2, "Open and close tags do not correspond"},
               {"<a>\n<b></B></a>", 3, "Open and close tags do not correspond"},
               {"<a><b></a></b>", 2, "Open and close tags do not correspond"},
               {"<1a/>", 2, "Ill formed tag name"},
               {"<a>< b/></a>", 2, "Ill formed tag name"},
               {"<a><?x?></a>", 2, "Ill formed tag name"},
               {"<a><b></b>\n\n", 4, "Non closed tag(s)"}};
  for (const auto& [text, line, message] : cases) {
    OrvaTextStream errors;
    _parser.SetErrorStream(errors.Get());
    EXPECT_EQ(Parse(HEADER + "<before/>" + text), 1) << text;
    EXPECT_EQ(errors.GetText(), SyntaxError(line, message)) << text;
    EXPECT_FALSE(_document.HasChild()) << text;
    EXPECT_TRUE(_parser.GetParseError());
    EXPECT_EQ(Parse(HEADER + "<a/>"), 0);  // the next parse starts anew
  }
  _parser.SetErrorStream(_errors.Get());
  EXPECT_EQ(Parse(HEADER + "<a x "), 1);  // the end after an attribute's name: two reports
  EXPECT_EQ(Parse("\n" + HEADER), 1);
  EXPECT_EQ(Parse(""), 1);
  EXPECT_EQ(Parse("<a/>"), 1);
  EXPECT_EQ(Parse("<?xml\n?"), 1);
  _parser.SetInputFileName("model.xml");
  EXPECT_EQ(Parse(HEADER + "</a>"), 1);
  EXPECT_EQ(_errors.GetText(), SyntaxError(2, "A '=' was expected") + SyntaxError(2, end) +
                                   SyntaxError(2, "Ill formed header") +
                                   SyntaxError(1, "Ill formed header") +
                                   SyntaxError(1, "Ill formed header") + SyntaxError(2, end) +
                                   "SYNTAX ERROR [model.xml, line 2]:\nNo opening tag\n\n");
}

TEST_F(XmlTest, RefusesMoreThan1024OpenElements) {
  const auto nest = [](int depth) {
    std::string open = HEADER, close;
    for (int i = 0; i < depth; ++i) open += "<a>", close += "</a>";
    return open + close;
  };
  EXPECT_EQ(Parse(nest(1024)), 0);
  EXPECT_EQ(Parse(nest(1025)), 1);
  EXPECT_EQ(_errors.GetText(), SyntaxError(2, "Too many open elements"));
  EXPECT_FALSE(_document.HasChild());
}

// Cut at any byte, a file is refused, but for cuts between two roots; nothing leaks.
TEST_F(XmlTest, SurvivesFilesCutAnywhere) {
  const std::string roots[] = {"<?x?>", "<!-- c -->", "<![CDATA[x]]>",
                               "<a p=\"1\" q=\"2\">text<b/> <c>\n<!--d--></c ><![CDATA[]x]]></a>"};
  std::string text;
  std::vector<std::size_t> ends;
  for (const std::string& root : roots) ends.push_back((text += root).size());
  _parser.SetErrorFile(nullptr);
  _parser.SetErrorStream(nullptr);
  Parse("<?x?></a>");  // makes the messenger, if it is to be made; nowhere to report to
  const auto balance = LumoMemoryManager::GetAllocationBalance();
  for (std::size_t size = 0; size <= text.size(); ++size) {
    const bool isBetweenRoots = std::find(ends.begin(), ends.end(), size) != ends.end();
    EXPECT_EQ(Parse(text.substr(0, size)), isBetweenRoots ? 0 : 1) << size;
    if (isBetweenRoots) continue;
    EXPECT_EQ(LumoMemoryManager::GetAllocationBalance(), balance) << size;
  }
  EXPECT_EQ(_document.GetNumberOfChildren(), 3);
}

TEST_F(XmlTest, LoadsIntoADocumentAndReportsOnStandardError) {
  _document.SetDocumentType("kept");
  const std::string wrong = HEADER + "<a>\n</b>";
  const OrvaTextFile file(wrong);
  testing::internal::CaptureStderr();
  _document.Load(file.Get());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            SyntaxError(3, "Open and close tags do not correspond"));
  EXPECT_EQ(_document.GetFirstRoot(), nullptr);
  const std::string right = HEADER + "<!-- c --><a/>";
  const OrvaTextFile other(right);
  _document.Load(other.Get());
  EXPECT_EQ(_document.FindRoot("a"), _document.GetLastRoot());
  EXPECT_STREQ(_document.GetDocumentType(), "kept");
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
  EXPECT_EQ(printer.GetDepth(), 0);
  printer.PrintOpenTag("a", stream);
  printer.PrintOpenTagOpening("b", stream);
  printer.PrintAttribute("t", true, stream);
  printer.PrintAttribute("i", -3, stream);
  printer.PrintAttribute("r", 1234567.0, stream);
  printer.PrintAttribute("s", "<\"&", stream);  // nothing is escaped
  printer.PrintOpenTagClosing(stream);
  EXPECT_EQ(printer.GetDepth(), 2);
  printer.PrintText("text", stream);
  printer.PrintCData("data", stream);
  printer.PrintComment("-- c --", stream);
  printer.PrintOpenTagOpening("c", stream);
  for (const LumoConstant* value : {&nil, &yes, &number, &real, &string, &pointer}) {
    printer.PrintAttribute("k", value, stream);
  }
  printer.PrintAttribute(&attribute, stream);
  printer.PrintOpenTagEnding(stream);
  printer.PrintCloseTag("b", stream);
  printer.SetIndentation("\t");
  printer.PrintTag("d", stream);
  printer.SetIndentation(0);
  printer.PrintTag("e", stream);
  printer.PrintCloseTag("a", stream);
  EXPECT_EQ(printer.GetDepth(), 0);
  printer.PrintDocumentHeader(nullptr, stream);
  EXPECT_EQ(
      text.GetText(),
      HEADER +
          "<!DOCTYPE orva>\n"
          "<a >\n"
          "  <b t=\"true\" i=\"-3\" r=\"1.23457e+06\" s=\"<\"&\" >\n"
          "text\n"
          "<![CDATA\ndata]]>\n"
          "    <!-- c -->\n"
          "    <c k=\"nil\" k=\"true\" k=\"7\" k=\"0.5\" k=\"s\" k=\"nil\" own=\"1 < \"2\"\" />\n"
          "  </b>\n"
          "\t<d />\n"
          "<e />\n"
          "</a>\n" +
          HEADER);
}

TEST_F(XmlTest, PrintsWholeTrees) {
  Read("<a><b/>text</a>");
  EXPECT_EQ(Print(), HEADER + "<a >\n  <b />\ntext\n</a>\n");
  LumoXMLPrinter printer;
  OrvaTextStream text;
  printer.SetDepth(1);  // kept by a document
  printer.PrintDocument(&_document, text.Get());
  printer.PrintTerm(&_document, text.Get());  // nothing
  const LumoXMLNode* a = Read("<a><!-- c --><![CDATA[x]]></a>");
  printer.SetDepth(0);
  printer.PrintTerm(a, text.Get());
  EXPECT_EQ(text.GetText(), HEADER + "  <a >\n    <b />\ntext\n  </a>\n" +
                                "<a >\n  <!-- c -->\n<![CDATA\nx]]>\n</a>\n");
}
