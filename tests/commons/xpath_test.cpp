#include "commons/xml_wrap.h"
#include "tests/support/thrown_text.h"
#include "tests/support/xml_errors.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace brask;
using test_support::thrownText;
using test_support::XmlErrors;

const std::string kCantEvaluate = "The XML document is invalid for an XPath expression.\n"
                                  "Cannot evaluate a result of the expression '";

class XPath : public testing::Test {
protected:
    XPath() { document.initFileDoc("list"); }

    tXPathExpr evaluate(const std::string& expr) const { return {document.doc_.get(), document.root_, expr}; }

    XmlNode root() const { return {document.doc_.get(), document.root_}; }

    tXmlBmmDocument document{
        std::string("<list><i>1</i><i>2</i><i>3</i><n:i xmlns:n='urn:n'>four</n:i></list>")};
};

TEST_F(XPath, FindsNodesFromTheNodeItIsGiven) {
    EXPECT_EQ(getNodeContent(evaluate("i[2]").getNode()), "2");
    EXPECT_EQ(getNodeContent(tXPathExpr(document.doc_.get(), toXml("/list/i"), nullptr).getNode()), "1");
    EXPECT_EQ(getNodeContent(root().getNode("x:i", {{"x", "urn:n"}}).node_), "four");
    EXPECT_TRUE(xpathExists(document.doc_.get(), toXml("count(i) = 3"), document.root_));
    EXPECT_FALSE(xpathExists(document.doc_.get(), toXml("none"), document.root_));
    EXPECT_EQ(evaluate("i").getXmlNode().getParent().node_, document.root_);
}

TEST_F(XPath, TellsWhereNothingWasFound) {
    const XmlNode second = root().getNode("i[2]");
    EXPECT_EQ(thrownText<Error<&tError_XPath_CantEvaluate>>([&] { evaluate("none").getNode(); }),
              kCantEvaluate + "none at path '/list''");
    EXPECT_EQ(thrownText<Error<&tError_XPath_CantEvaluate>>([&] { second.getNode("none"); }),
              kCantEvaluate + "none at path '/list/i[2]''");
    EXPECT_EQ(thrownText<Error<&tError_XPath_CantEvaluate>>(
                  [&] { tXPathExpr(document.doc_.get(), toXml("/none"), nullptr).getNode(); }),
              kCantEvaluate + "/none'");
}

TEST_F(XPath, TellsAnExpressionThatIsWrongAndAResultThatIsNoNodeSet) {
    const XmlErrors complaint;
    EXPECT_EQ(thrownText<Error<&tError_XPath_CantEvaluate>>([&] { evaluate("i["); }), kCantEvaluate + "i['");
    EXPECT_NE(complaint.text.find("Invalid expression"), std::string::npos) << complaint.text;
    EXPECT_THROW(evaluate("x:i"), Error<&tError_XPath_CantEvaluate>) << "a prefix that nobody registered";

    const std::string mismatch = "The result of the expression 'count(i)' is not a 'nodeset' type";
    const tXPathExpr count = evaluate("count(i)");
    EXPECT_EQ(thrownText<Error<&tError_XPath_TypesMismatch>>([&] { count.getNodeSet(); }), mismatch);
    EXPECT_EQ(thrownText<Error<&tError_XPath_TypesMismatch>>([&] { root().getNode("count(i)"); }), mismatch);
}

TEST_F(XPath, OnlyTheDocumentAndDetachedNodesHaveNoParent) {
    const XmlNode documentNode = root().getParent();
    EXPECT_EQ(documentNode.node_->type, XML_DOCUMENT_NODE);
    EXPECT_EQ(thrownText<Error<&NoParentNode>>([&] { documentNode.getParent(); }),
              "No parent node on requested XML element");
    EXPECT_THROW(getNodeContent(nullptr), std::logic_error);
    const XmlNode added = addChildNode(document, document.root_, "added");
    EXPECT_EQ(added.node_, document.root_->last);
}

std::vector<std::string> failures;

void noteFailure(const ExTraceableBase<ExDefault>& error) {
    failures.emplace_back(error.what());
}

struct Visit : tXmlOperator {
    explicit Visit(std::vector<std::string>& seen) : seen(seen) {}

    int operator()(const XmlNode& node) const override {
        seen.push_back(getNodeContent(node.node_));
        if (seen.back() == "2") {
            BRASK_THROW(tError_XmlInternal, "two");
        }
        if (seen.back() == "four") {
            BRASK_THROW_AS(tError_XmlInternal, ExFatal, "fatal");
        }
        return 0;
    }

    std::vector<std::string>& seen;
};

TEST_F(XPath, AVisitGoesOnAfterAFailureUnlessItIsFatal) {
    failures.clear();
    std::vector<std::string> seen;
    const Visit visit(seen);
    EXPECT_EQ(foreach_xmlnode(evaluate("i"), visit, noteFailure), 1);
    EXPECT_EQ(seen, (std::vector<std::string>{"1", "2", "3"}));
    EXPECT_EQ(failures, std::vector<std::string>{"two"});

    EXPECT_EQ(foreach_xmlnode(evaluate("none"), visit, noteFailure), 1);
    EXPECT_EQ(seen.size(), 3U);
    EXPECT_THROW(foreach_xmlnode(evaluate("*"), visit, noteFailure), ExTraceableBase<ExFatal>);
    EXPECT_THROW(foreach_xmlnode(evaluate("1"), visit, noteFailure), Error<&tError_XPath_TypesMismatch>);

    const tXPathExpr hollow = evaluate("i");
    xmlXPathFreeNodeSet(hollow.getResult()->nodesetval);
    hollow.getResult()->nodesetval = nullptr;
    failures.clear();
    EXPECT_EQ(foreach_xmlnode(hollow, visit, noteFailure), 0);
    EXPECT_EQ(failures, std::vector<std::string>{"Can not evaluate XPath expression: i"});
}

} // namespace
