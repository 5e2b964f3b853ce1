#pragma once

#include "commons/xml/xml_node.h"

#include <libxml/xpath.h>

#include <map>
#include <string>

namespace brask {

BRASK_ERROR_TAG(tError_XPath_CantEvaluate, "The XML document is invalid for an XPath expression.\n"
                                           "Cannot evaluate a result of the expression '{}'")
BRASK_ERROR_TAG(tError_XPath_TypesMismatch, "The result of the expression '{}' is not a '{}' type")

class tXmlOperator;

/// Called with a failure during foreach_xmlnode.
using tErrorFunc = void (*)(const ExTraceableBase<ExDefault>& error);

/// One evaluated XPath expression, which owns its context and its result; copies share them. The document is
/// not owned: it must outlive the expression and every node that was got from it.
///
/// No namespace is known by default: `namespaces` maps the prefixes to URIs. A null `node` means the
/// document. The constructors raise as evalExpression does.
class tXPathExpr {
public:
    tXPathExpr(xmlDocPtr doc, const xmlChar* expr, xmlNodePtr node,
               const std::map<std::string, std::string>& namespaces);
    tXPathExpr(xmlDocPtr doc, const xmlChar* expr, xmlNodePtr node);
    tXPathExpr(xmlDocPtr doc, xmlNodePtr node, cstring& expr);

    /// Evaluates `expr` in place of what was evaluated before; later messages and nodes still name the
    /// expression and the document of the constructor. Returns 1. Raises tError_XPath_CantEvaluate when the
    /// expression is wrong (libxml2's own complaint goes to its generic error handler), AssertionFailed when
    /// there is no memory for the context.
    int evalExpression(xmlDocPtr doc, const xmlChar* expr, xmlNodePtr node,
                       const std::map<std::string, std::string>& namespaces);

    /// May be null, and still owned here. Raises tError_XPath_TypesMismatch when the result is no node set.
    xmlNodeSet* getNodeSet() const;

    /// The first node of the set in libxml2's order, never null. Raises tError_XPath_TypesMismatch, and
    /// tError_XPath_CantEvaluate when nothing was found.
    xmlNode* getNode() const;

    /// getNode() with the document.
    XmlNode getXmlNode() const;

    /// For xmlXPathCastToBoolean and xmlXPathCastToString; still owned here.
    xmlXPathObject* getResult() const;

    friend int foreach_xmlnode(const tXPathExpr& expr, const tXmlOperator& op, tErrorFunc onError);

private:
    ttPtrWrapper<xmlXPathContext*, xmlXPathFreeContext> xpathCtx_;
    ttPtrWrapper<xmlXPathObject*, xmlXPathFreeObject> result_;
    tXmlCharPtr expression_;
    xmlDocPtr doc_;
};

/// What foreach_xmlnode does with a node.
class tXmlOperator {
public:
    tXmlOperator() = default;
    tXmlOperator(const tXmlOperator&) = default;
    tXmlOperator& operator=(const tXmlOperator&) = default;
    virtual ~tXmlOperator() = default;

    /// The result is not used.
    virtual int operator()(const XmlNode& node) const = 0;
};

/// Calls `op` for each node of the expression's set, in order, and returns 1. An ExTraceableBase<ExDefault>
/// that it throws goes to `onError`, and the walk goes on; any other exception ends the walk. A null set is
/// passed to `onError` and gives 0. Raises tError_XPath_TypesMismatch when the result is no node set.
int foreach_xmlnode(const tXPathExpr& expr, const tXmlOperator& op, tErrorFunc onError);

/// The result of `expr` as a boolean: for a node set, whether it holds any. Raises as evalExpression does.
bool xpathExists(xmlDocPtr doc, const xmlChar* expr, xmlNodePtr node);

} // namespace brask
