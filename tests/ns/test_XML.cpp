// XML documents: safe parsing, empty handles, path queries, building, printing, ownership of
// detached nodes and the guard over libxml2's process-wide settings.
#include "ns/Assert.h"
#include "ns/Data.h"
#include "ns/Error.h"
#include "ns/String.h"
#include "ns/XMLDocument.h"
#include "ns/XMLGlobalsGuard.h"

#include <gtest/gtest.h>
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

using namespace vl::ns;

namespace {

XMLDocument parse(std::string_view xml, uint64_t options = 0) {
  ErrorPtr error;
  XMLDocument doc = XMLDocument::createWithData(xml, options, &error);
  EXPECT_TRUE(doc) << (error ? toUTF8(error->localizedDescription()) : "");
  return doc;
}

std::string billionLaughs() {
  std::string xml = "<?xml version=\"1.0\"?>\n<!DOCTYPE lolz [\n<!ENTITY lol0 \"lol\">\n";
  for (int i = 1; i < 10; ++i) {
    xml += "<!ENTITY lol" + std::to_string(i) + " \"";
    for (int j = 0; j < 10; ++j)
      xml += "&lol" + std::to_string(i - 1) + ";";
    xml += "\">\n";
  }
  return xml + "]>\n<lolz>&lol9;</lolz>\n";
}

/// The small screenplay document the printing tests share.
XMLDocument smallDocument() {
  XMLDocument doc = XMLDocument::create();
  doc.setCharacterEncoding(u"UTF-8");
  doc.setStandalone(false);
  XMLElement root = XMLElement::create(u"FinalDraft");
  root.setAttribute(u"DocumentType", u"Script");
  root.setAttribute(u"Version", u"1");
  doc.setRootElement(root);
  XMLElement content = XMLElement::create(u"Content");
  root.addChild(content);
  XMLElement paragraph = XMLElement::create(u"Paragraph");
  paragraph.setAttribute(u"Type", u"Action");
  content.addChild(paragraph);
  XMLElement text = XMLElement::create(u"Text");
  text.setStringValue(u"Tom & Jerry <run> \u00e9");
  paragraph.addChild(text);
  root.addChild(XMLElement::create(u"TextState"));
  return doc;
}

int registeredNodes = 0;
void countRegistration(xmlNodePtr) {
  ++registeredNodes;
}
void ignoreNode(xmlNodePtr) {}
int freedNodes = 0;
void countFree(xmlNodePtr node) {
  if (node->type == XML_ELEMENT_NODE)
    ++freedNodes;
}

} // namespace

TEST(XMLParse, ReadsElementsAttributesAndText) {
  XMLDocument doc = parse("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                          "<FinalDraft Version=\"1\"><Content>\n"
                          "  <Paragraph Type=\"Action\"><Text>Hello, </Text><Text>world</Text>"
                          "</Paragraph>\n  <!-- a note -->\n</Content></FinalDraft>");
  EXPECT_EQ(doc.characterEncoding(), u"UTF-8");
  XMLElement root = doc.rootElement();
  EXPECT_EQ(root.attribute(u"Version"), u"1");
  EXPECT_EQ(root.attribute(u"Missing"), std::nullopt);
  XMLElement content = root.childNamed(u"Content");
  // Blank text between elements is dropped; the comment stays.
  ASSERT_EQ(content.childCount(), 2u);
  EXPECT_EQ(content.childAtIndex(1).kind(), XMLCommentKind);
  XMLElement paragraph = content.childNamed(u"Paragraph");
  EXPECT_EQ(paragraph.stringValue(), u"Hello, world");
  EXPECT_EQ(paragraph.elementsForName(u"Text").size(), 2u);
  XMLNode first = paragraph.firstChild();
  EXPECT_EQ(first.nextSibling().previousSibling(), first);

  // A blank that is an element's whole content is text, not layout, and stays either way.
  std::string_view xml = "<a>\n  <b> </b>\n</a>";
  EXPECT_EQ(parse(xml).rootElement().childNamed(u"b").stringValue(), u" ");
  EXPECT_EQ(parse(xml, XMLNodePreserveWhitespace).rootElement().childCount(), 3u);
}

TEST(XMLParse, DecodesTheDeclaredEncodingAndPrintsUTF8) {
  XMLDocument doc = parse("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>caf\xe9</a>");
  EXPECT_EQ(doc.rootElement().stringValue(), u"caf\u00e9");
  EXPECT_EQ(doc.XMLUTF8WithOptions(XMLNodeOptionsNone),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>caf\xc3\xa9</a>\n");
}

TEST(XMLParse, MalformedInputAnswersAnErrorWithLibxml2sMessageAndLine) {
  ErrorPtr error;
  XMLDocument doc = XMLDocument::createWithData(std::string_view("<a>\n<b>\n</a>"), 0, &error);
  EXPECT_FALSE(doc);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), XMLParserErrorDomain);
  EXPECT_EQ(error->code(), XML_ERR_TAG_NAME_MISMATCH);
  std::u16string description = error->localizedDescription();
  EXPECT_NE(description.find(u"Line 3"), std::u16string::npos) << toUTF8(description);
  EXPECT_NE(description.find(u"Opening and ending tag mismatch"), std::u16string::npos);
  EXPECT_FALSE(XMLDocument::createWithData(Data()));
}

TEST(XMLParse, RefusesEntitiesThatExpandFarBeyondTheDocument) {
  // libxml2's expansion limits stop the billion laughs at once.
  ErrorPtr error;
  EXPECT_FALSE(XMLDocument::createWithData(billionLaughs(), 0, &error));
  EXPECT_EQ(error->code(), XML_ERR_ENTITY_LOOP);
  // Accepted by libxml2 as the references are not replaced, but stringValue would build 20 MB
  // from 100 kB; the same shape scales to gigabytes.
  std::string xml = "<!DOCTYPE a [<!ENTITY big \"" + std::string(1000, 'x') + "\">]><a>";
  for (int i = 0; i < 20000; ++i)
    xml += "&big;";
  error.reset();
  EXPECT_FALSE(XMLDocument::createWithData(xml + "</a>", 0, &error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), XML_ERR_ENTITY_LOOP);
  // Modest use of entities is fine, and their text is read through the references.
  XMLDocument doc = parse("<!DOCTYPE a [<!ENTITY who \"Ann &amp; Bob\"><!ENTITY line "
                          "\"&who;, <b>left</b>\">]><a t=\"&who;\">&line; &line;</a>");
  EXPECT_EQ(doc.rootElement().stringValue(), u"Ann & Bob, left Ann & Bob, left");
  EXPECT_EQ(doc.rootElement().attribute(u"t"), u"Ann & Bob");
}

TEST(XMLParse, NeverLoadsExternalEntitiesOrDTDs) {
  std::string path = ::testing::TempDir() + "vlwp_xml_secret.txt";
  std::ofstream(path) << "SECRET";
  std::string dtdPath = ::testing::TempDir() + "vlwp_xml_secret.dtd";
  std::ofstream(dtdPath) << "<!ATTLIST a leaked CDATA \"SECRET\">";
  std::string xml = "<!DOCTYPE a SYSTEM \"file://" + dtdPath + "\" [<!ENTITY e SYSTEM \"file://" +
                    path + "\">]><a>&e;</a>";
  XMLDocument doc = XMLDocument::createWithData(xml);
  std::remove(path.c_str());
  std::remove(dtdPath.c_str());
  ASSERT_TRUE(doc);
  EXPECT_EQ(doc.rootElement().stringValue().find(u"SECRET"), std::u16string::npos);
  EXPECT_EQ(doc.rootElement().attribute(u"leaked"), std::nullopt);
  EXPECT_EQ(doc.XMLUTF8WithOptions(0).find("SECRET"), std::string::npos);
}

TEST(XMLEmptyNodes, EveryQueryOnNothingAnswersNothing) {
  XMLDocument doc = parse("<Root><A/></Root>");
  EXPECT_EQ(doc.rootElement().childNamed(u"A").childNamed(u"B").attribute(u"x"), std::nullopt);
  EXPECT_EQ(doc.rootElement().childNamed(u"Z").childNamed(u"B").stringValue(), u"");
  XMLElement none;
  EXPECT_FALSE(none.parent().parent().nextSibling());
  EXPECT_TRUE(none.nodesForXPath(u"//a").empty());
  EXPECT_EQ(none.XMLString(), u"");
  // Changes to nothing do nothing.
  none.setAttribute(u"x", u"1");
  none.addChild(XMLElement::create(u"b"));
  none.setStringValue(u"text");
  none.detach();
  // A node of another kind is no element.
  EXPECT_FALSE(XMLElement(doc));
  EXPECT_TRUE(XMLElement(XMLNode(doc.rootElement())));
}

TEST(XMLXPath, QueriesWithRegisteredAndDeclaredPrefixes) {
  XMLDocument doc = parse(
      "<package xmlns=\"http://www.idpf.org/2007/opf\" "
      "xmlns:dc=\"http://purl.org/dc/elements/1.1/\">"
      "<metadata><dc:title>One</dc:title><dc:creator>Ann</dc:creator></metadata>"
      "<manifest><item id=\"a\" href=\"a.xhtml\"/><item id=\"b\" href=\"b.xhtml\"/></manifest>"
      "</package>");
  // The default namespace needs a prefix of the caller's; "dc" comes from the document.
  ErrorPtr error;
  auto items = doc.nodesForXPath(u"/opf:package/opf:manifest/opf:item",
                                 {{u"opf", u"http://www.idpf.org/2007/opf"}}, &error);
  EXPECT_FALSE(error);
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(XMLElement(items[1]).attribute(u"href"), u"b.xhtml");
  auto titles = doc.nodesForXPath(u"//dc:title", &error);
  ASSERT_EQ(titles.size(), 1u);
  EXPECT_EQ(titles[0].prefix(), u"dc");
  EXPECT_EQ(titles[0].stringValue(), u"One");
  // Without the binding the path names elements in no namespace, which there are none of.
  EXPECT_TRUE(doc.nodesForXPath(u"/package").empty());
}

TEST(XMLXPath, RelativePathsAttributesAndFailures) {
  XMLDocument doc = parse("<FinalDraft><Content><Paragraph Type=\"Action\"/>"
                          "<Paragraph Type=\"Character\"/></Content></FinalDraft>");
  XMLElement content = doc.rootElement().childNamed(u"Content");
  auto types = content.nodesForXPath(u"Paragraph/@Type");
  ASSERT_EQ(types.size(), 2u);
  EXPECT_EQ(types[1].kind(), XMLAttributeKind);
  EXPECT_EQ(types[1].stringValue(), u"Character");

  ErrorPtr error;
  EXPECT_TRUE(doc.nodesForXPath(u"/FinalDraft[", &error).empty());
  ASSERT_TRUE(error);
  EXPECT_NE(error->localizedDescription().find(u"/FinalDraft["), std::u16string::npos);
  for (const char16_t *notNodes : {u"count(//Paragraph)", u"//sl:document"}) {
    error.reset();
    EXPECT_TRUE(doc.nodesForXPath(notNodes, &error).empty());
    EXPECT_TRUE(error);
  }
}

TEST(XMLPrinting, TheThreeFormsByteForByte) {
  XMLDocument doc = smallDocument();
  const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n";
  const std::string text = "<Text>Tom &amp; Jerry &lt;run&gt; \xc3\xa9</Text>";
  EXPECT_EQ(doc.XMLUTF8WithOptions(XMLNodeOptionsNone),
            declaration + "<FinalDraft DocumentType=\"Script\" Version=\"1\"><Content>" +
                "<Paragraph Type=\"Action\">" + text +
                "</Paragraph></Content><TextState></TextState></FinalDraft>\n");
  const std::string pretty = declaration + "<FinalDraft DocumentType=\"Script\" Version=\"1\">\n" +
                             "    <Content>\n" + "        <Paragraph Type=\"Action\">\n" +
                             "            " + text + "\n" + "        </Paragraph>\n" +
                             "    </Content>\n";
  EXPECT_EQ(doc.XMLUTF8WithOptions(XMLNodePrettyPrint),
            pretty + "    <TextState></TextState>\n</FinalDraft>\n");
  EXPECT_EQ(doc.XMLUTF8WithOptions(XMLNodePrettyPrint | XMLNodeCompactEmptyElement),
            pretty + "    <TextState/>\n</FinalDraft>\n");
}

TEST(XMLPrinting, DeclarationDoctypeAndSingleNodes) {
  XMLDocument doc = XMLDocument::create();
  doc.setCharacterEncoding(u"UTF-8");
  doc.setStandalone(true);
  doc.setRootElement(XMLElement::create(u"ncx"));
  doc.setDTD(XMLDTD::create(u"ncx", u"-//NISO//DTD ncx 2005-1//EN",
                            u"http://www.daisy.org/z3986/2005/ncx-2005-1.dtd"));
  EXPECT_EQ(doc.XMLUTF8WithOptions(XMLNodeCompactEmptyElement),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
            "<!DOCTYPE ncx PUBLIC \"-//NISO//DTD ncx 2005-1//EN\" "
            "\"http://www.daisy.org/z3986/2005/ncx-2005-1.dtd\">\n<ncx/>\n");
  doc.setDTD(XMLDTD::create(u"html", u"", u"xhtml11.dtd"));
  EXPECT_EQ(doc.childCount(), 2u) << "a new doctype replaces the old one";

  XMLElement element = XMLElement::create(u"p");
  element.setAttribute(u"title", u"\"quoted\"\n");
  element.addChild(XMLNode::textWithStringValue(u"a\u0001b"));
  EXPECT_EQ(element.XMLString(), u"<p title=\"&quot;quoted&quot;&#10;\">ab</p>");
}

TEST(XMLBuilding, AttributesKeepTheirOrderAndChangeInPlace) {
  XMLElement element = XMLElement::create(u"PageLayout");
  for (auto name : {u"TopMargin", u"BackgroundColor", u"BottomMargin", u"Alpha"})
    element.setAttribute(name, u"1");
  element.setAttribute(u"BackgroundColor", u"#FFFFFFFFFFFF");
  element.removeAttributeForName(u"BottomMargin");
  element.addAttribute(XMLNode::attributeWithName(u"Zed", u"z"));
  element.addAttribute(XMLNode::attributeWithName(u"Alpha", u"ignored"));
  EXPECT_EQ(element.XMLString(), u"<PageLayout TopMargin=\"1\" BackgroundColor=\"#FFFFFFFFFFFF\" "
                                 u"Alpha=\"1\" Zed=\"z\"></PageLayout>");
  // Values are text, never markup.
  element.setAttribute(u"Alpha", u"&amp;");
  EXPECT_EQ(element.attribute(u"Alpha"), u"&amp;");
}

TEST(XMLBuilding, ChildrenInsertReplaceRemoveAndText) {
  XMLElement body = XMLElement::create(u"body");
  XMLElement first = XMLElement::create(u"p");
  body.addChild(first);
  body.addChild(XMLNode::commentWithStringValue(u" c "));
  body.insertChild(XMLNode::textWithStringValue(u"\n  "), 0);
  body.insertChild(XMLElement::create(u"h1"), 3);
  EXPECT_EQ(body.XMLString(), u"<body>\n  <p></p><!-- c --><h1></h1></body>");
  body.replaceChildAtIndex(3, XMLNode::CDATAWithStringValue(u"<raw>"));
  body.replaceChild(first, XMLNode::processingInstructionWithName(u"pi", u"x=1"));
  body.removeChildAtIndex(0);
  EXPECT_EQ(body.XMLString(), u"<body><?pi x=1?><!-- c --><![CDATA[<raw>]]></body>");
  first.addNextSibling(XMLElement::create(u"lost"));
  EXPECT_FALSE(first.parent());
  body.firstChild().addNextSibling(first);
  body.firstChild().addPreviousSibling(XMLElement::create(u"br"));
  EXPECT_EQ(body.childAtIndex(2), first);
  EXPECT_THROW(first.addChild(body), InternalInconsistencyException);
  EXPECT_THROW(body.addChild(XMLNode::attributeWithName(u"a", u"b")),
               InternalInconsistencyException);
  body.setStringValue(u"only text");
  EXPECT_EQ(body.XMLString(), u"<body>only text</body>");
  body.setChildren({XMLElement::create(u"a"), XMLElement::create(u"b")});
  EXPECT_EQ(body.XMLString(), u"<body><a></a><b></b></body>");
  XMLDocument doc = XMLDocument::createWithRootElement(body);
  EXPECT_THROW(doc.addChild(XMLElement::create(u"second")), InternalInconsistencyException);
  doc.insertChild(XMLNode::commentWithStringValue(u"top"), 0);
  doc.setRootElement(XMLElement(body.firstChild()));
  EXPECT_EQ(doc.XMLUTF8WithOptions(XMLNodeOmitXMLDeclaration), "<!--top-->\n<a></a>\n");
}

TEST(XMLBuilding, NamespacesBindAndPrintOnce) {
  XMLElement package = XMLElement::create(u"package", u"http://www.idpf.org/2007/opf");
  XMLDocument doc = XMLDocument::createWithRootElement(package);
  XMLElement metadata = XMLElement::create(u"metadata");
  XMLElement creator = XMLElement::create(u"dc:creator");
  creator.setAttribute(u"opf:role", u"aut");
  creator.setStringValue(u"Ann");
  metadata.addChild(creator);
  // The prefixes are declared after their names were written; they bind then.
  metadata.setAttribute(u"xmlns:dc", u"http://purl.org/dc/elements/1.1/");
  metadata.addNamespace(u"opf", u"http://www.idpf.org/2007/opf");
  package.addChild(metadata);
  XMLElement language = XMLElement::create(u"dc:language", u"http://purl.org/dc/elements/1.1/");
  language.setAttribute(u"xml:lang", u"en");
  metadata.addChild(language);
  EXPECT_EQ(creator.URI(), u"http://purl.org/dc/elements/1.1/");
  EXPECT_EQ(creator.attribute(u"role", u"http://www.idpf.org/2007/opf"), u"aut");
  EXPECT_EQ(doc.XMLUTF8WithOptions(XMLNodeOmitXMLDeclaration),
            "<package xmlns=\"http://www.idpf.org/2007/opf\"><metadata "
            "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
            "xmlns:opf=\"http://www.idpf.org/2007/opf\"><dc:creator opf:role=\"aut\">Ann"
            "</dc:creator><dc:language xml:lang=\"en\"></dc:language></metadata></package>\n");
  // Prefixes declared below the context node are not in scope there.
  EXPECT_TRUE(doc.nodesForXPath(u"//dc:creator").empty());
  EXPECT_EQ(metadata.nodesForXPath(u"dc:creator[@opf:role='aut']").size(), 1u);
}

TEST(XMLOwnership, HandlesKeepTheirTreesAlive) {
  XMLElement paragraph;
  {
    XMLDocument doc = parse("<a xmlns:x=\"urn:x\"><x:b x:k=\"v\"><c>text</c></x:b><d/></a>");
    paragraph = doc.rootElement().childNamed(u"x:b");
  }
  // The document lives on through the element.
  EXPECT_EQ(paragraph.rootDocument().rootElement().name(), u"a");
  XMLElement detached = paragraph;
  detached.detach();
  paragraph = XMLElement();
  EXPECT_FALSE(detached.rootDocument());
  // Its namespace survives the tree it came from.
  EXPECT_EQ(detached.URI(), u"urn:x");
  EXPECT_EQ(detached.XMLString(), u"<x:b xmlns:x=\"urn:x\" x:k=\"v\"><c>text</c></x:b>");

  // Moving between documents in both directions, then dropping them in either order.
  XMLDocument built = XMLDocument::createWithRootElement(XMLElement::create(u"root"));
  built.rootElement().addChild(detached);
  XMLDocument parsed = parse("<other><e/></other>");
  built.rootElement().addChild(parsed.rootElement().childNamed(u"e"));
  parsed.rootElement().addChild(built.rootElement().childNamed(u"x:b").childNamed(u"c"));
  parsed = XMLDocument();
  EXPECT_EQ(built.XMLUTF8WithOptions(XMLNodeOmitXMLDeclaration),
            "<root><x:b xmlns:x=\"urn:x\" x:k=\"v\"></x:b><e></e></root>\n");
  XMLNode moved = built.rootElement().lastChild();
  built = XMLDocument();
  EXPECT_EQ(moved.XMLString(), u"<e></e>");
}

TEST(XMLOwnership, DetachedNodesAreFreedWithTheirLastHandle) {
  XMLDocument doc = parse("<a><b><c/></b><d/></a>");
  XMLElement root = doc.rootElement();
  XMLGlobalsGuard guard;
  guard.setNodeCallbacks(nullptr, countFree);
  freedNodes = 0;
  XMLNode c = root.childNamed(u"b").firstChild();
  root.removeChildAtIndex(0);
  EXPECT_EQ(freedNodes, 0); // b lives on through c
  EXPECT_EQ(c.parent().name(), u"b");
  root.removeChildAtIndex(0);
  EXPECT_EQ(freedNodes, 1); // d had no handle
  XMLNode b = c.parent();
  c = XMLNode();
  EXPECT_EQ(freedNodes, 1);
  EXPECT_EQ(b.XMLString(), u"<b><c></c></b>");
  b = XMLNode();
  EXPECT_EQ(freedNodes, 3);
  // Nodes put back into the tree belong to it again.
  XMLElement e = XMLElement::create(u"e");
  root.addChild(e);
  e = XMLElement();
  EXPECT_EQ(freedNodes, 3);
  root.setStringValue(u"");
  EXPECT_EQ(freedNodes, 4);
}

TEST(XMLOwnership, RandomEditsAcrossDocumentsStaySound) {
  // Moves, detaches and dropped handles in random order over two parsed documents (one with
  // namespaces and a dictionary) and free-standing nodes. AddressSanitizer turns any slip in the
  // bookkeeping into a failure; the printed sizes only check that every tree stays walkable.
  std::vector<XMLNode> nodes;
  XMLDocument a =
      parse("<a xmlns:p=\"urn:p\"><p:b p:k=\"1\"><c>t</c></p:b><d xml:lang=\"en\"/></a>");
  XMLDocument b = parse("<x><y>text</y><z/></x>");
  for (XMLDocument doc : {a, b})
    for (XMLNode node = doc.rootElement(); node; node = node.nextNode())
      nodes.push_back(node);
  unsigned state = 12345;
  auto next = [&](size_t bound) {
    state = state * 1103515245u + 12345u;
    return static_cast<size_t>((state >> 8) % bound);
  };
  for (int step = 0; step < 1000; ++step) {
    XMLNode &target = nodes[next(nodes.size())];
    XMLElement element(target);
    XMLNode &other = nodes[next(nodes.size())];
    size_t op = next(10);
    try { // refused moves (a node into itself, an attribute as a child) throw
      if (op == 0)
        nodes.push_back(XMLElement::create(next(2) ? u"p:new" : u"new"));
      else if (op == 1)
        element.addChild(other);
      else if (op == 2)
        target.addNextSibling(other);
      else if (op == 3 && !XMLElement(other).attributes().empty())
        element.addAttribute(XMLElement(other).attributes().front());
      else if (op == 3)
        element.setAttribute(u"p:k", u"v");
      else if (op == 4)
        target.detach();
      else if (op == 5)
        target = XMLNode();
      else if (op == 6)
        nodes.push_back(target.copy());
      else if (op == 7 && element.childCount() > 0)
        element.removeChildAtIndex(next(element.childCount()));
      else
        target.setStringValue(u"s");
    } catch (const InternalInconsistencyException &) {
    }
    if (nodes.size() > 60)
      nodes.erase(nodes.begin() + static_cast<long>(next(nodes.size())));
  }
  size_t printed = 0;
  for (const XMLNode &node : nodes)
    printed += node.XMLUTF8WithOptions(XMLNodePrettyPrint).size();
  EXPECT_GT(printed, 0u);
}

TEST(XMLGlobalsGuard, RestoresCallbacksAfterAGuardedParseEvenWhenItFails) {
  xmlRegisterNodeFunc originalRegister = xmlRegisterNodeDefault(ignoreNode);
  xmlDeregisterNodeFunc originalDeregister = xmlDeregisterNodeDefault(ignoreNode);
  {
    XMLGlobalsGuard guard;
    guard.setNodeCallbacks(countRegistration, nullptr);
    registeredNodes = 0;
    EXPECT_TRUE(XMLDocument::createWithData(std::string_view("<a><b/></a>")));
    EXPECT_GT(registeredNodes, 0);
    guard.clearNodeCallbacks();
    EXPECT_FALSE(XMLDocument::createWithData(std::string_view("<a><b></a>")));
    EXPECT_EQ(xmlRegisterNodeDefaultValue, nullptr);
  }
  EXPECT_EQ(xmlRegisterNodeDefaultValue, ignoreNode);
  EXPECT_THROW(
      {
        XMLGlobalsGuard guard;
        guard.clearNodeCallbacks();
        throw std::runtime_error("converter failed");
      },
      std::runtime_error);
  EXPECT_EQ(xmlRegisterNodeDefaultValue, ignoreNode);
  xmlRegisterNodeDefault(originalRegister);
  xmlDeregisterNodeDefault(originalDeregister);
}

TEST(XMLGlobalsGuard, RestoresIndentationAndBlankDefaultsAroundADump) {
  int indent = xmlIndentTreeOutput;
  const char *indentString = xmlTreeIndentString;
  int keepBlanks = xmlKeepBlanksDefaultValue;
  XMLDocument doc = parse("<a><b/></a>");
  {
    XMLGlobalsGuard guard;
    guard.setIndentTreeOutput(false);
    guard.setKeepBlanksDefault(false); // turns indentation back on, as libxml2 does
    guard.setTreeIndentString("\t");
    xmlChar *buffer = nullptr;
    int size = 0;
    xmlDocDumpFormatMemoryEnc(reinterpret_cast<xmlDocPtr>(doc.xmlDoc()), &buffer, &size, "utf-8",
                              1);
    EXPECT_EQ(std::string(reinterpret_cast<char *>(buffer), static_cast<size_t>(size)),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<a>\n\t<b/>\n</a>\n");
    xmlFree(buffer);
  }
  EXPECT_EQ(xmlIndentTreeOutput, indent);
  EXPECT_EQ(xmlTreeIndentString, indentString);
  EXPECT_EQ(xmlKeepBlanksDefaultValue, keepBlanks);
}

TEST(XMLRaw, DocumentsMadeByLibxml2CanBeAdoptedAndWrapped) {
  const char xml[] = "<Binder><BinderItem ID=\"1\"/></Binder>";
  xmlDocPtr raw = xmlReadMemory(xml, sizeof xml - 1, "Example.scrivx", nullptr, XML_PARSE_NOBLANKS);
  XMLDocument doc = XMLDocument::adoptXMLDoc(raw);
  EXPECT_EQ(doc.rootElement().childNamed(u"BinderItem").attribute(u"ID"), u"1");
  xmlNodePtr item = xmlNewDocNode(raw, nullptr, BAD_CAST "BinderItem", nullptr);
  XMLElement wrapped(doc.nodeForXMLNode(item));
  wrapped.setAttribute(u"ID", u"2");
  doc.rootElement().addChild(wrapped);
  EXPECT_EQ(doc.nodesForXPath(u"//BinderItem[@ID='2']").size(), 1u);
}
