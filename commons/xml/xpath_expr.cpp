#include "commons/xml/xpath_expr.h"

#include <libxml/xpathInternals.h>

namespace brask {

namespace {

/// The expression with the place that it was evaluated at, as far as libxml2 can name it.
std::string withNodePath(std::string expression, const xmlNode* node) {
    if (node != nullptr) {
        const tXmlCharPtr path(xmlGetNodePath(node));
        if (path.get() != nullptr) {
            expression += std::string(" at path '") + fromXml(path.get()) + "'";
        }
    }
    return expression;
}

} // namespace

tXPathExpr::tXPathExpr(xmlDocPtr doc, const xmlChar* expr, xmlNodePtr node,
                       const std::map<std::string, std::string>& namespaces)
    : expression_(xmlStrdup(expr)), doc_(doc) {
    evalExpression(doc, expr, node, namespaces);
}

tXPathExpr::tXPathExpr(xmlDocPtr doc, const xmlChar* expr, xmlNodePtr node)
    : tXPathExpr(doc, expr, node, {}) {}

tXPathExpr::tXPathExpr(xmlDocPtr doc, xmlNodePtr node, cstring& expr)
    : tXPathExpr(doc, toXml(expr), node, {}) {}

int tXPathExpr::evalExpression(xmlDocPtr doc, const xmlChar* expr, xmlNodePtr node,
                               const std::map<std::string, std::string>& namespaces) {
    xpathCtx_ = ttPtrWrapper<xmlXPathContext*, xmlXPathFreeContext>(xmlXPathNewContext(doc));
    requireThat(xpathCtx_.get() != nullptr, "xpathCtx_.get() != NULL");
    if (node != nullptr) {
        xpathCtx_.get()->node = node;
    }
    for (const auto& [prefix, uri] : namespaces) {
        // A registration that is refused shows as an evaluation that fails.
        xmlXPathRegisterNs(xpathCtx_.get(), toXml(prefix), toXml(uri));
    }
    result_ =
        ttPtrWrapper<xmlXPathObject*, xmlXPathFreeObject>(xmlXPathEvalExpression(expr, xpathCtx_.get()));
    if (result_.get() == nullptr) {
        BRASK_THROW(tError_XPath_CantEvaluate, fromXml(expr));
    }
    return 1;
}

xmlNodeSet* tXPathExpr::getNodeSet() const {
    if (result_.get()->type != XPATH_NODESET) {
        BRASK_THROW(tError_XPath_TypesMismatch, fromXml(expression_.get()), "nodeset");
    }
    return result_.get()->nodesetval;
}

xmlNode* tXPathExpr::getNode() const {
    const xmlNodeSet* const set = getNodeSet();
    if (set == nullptr || set->nodeNr <= 0) {
        BRASK_THROW(tError_XPath_CantEvaluate,
                    withNodePath(fromXml(expression_.get()), xpathCtx_.get()->node));
    }
    return set->nodeTab[0];
}

XmlNode tXPathExpr::getXmlNode() const {
    return {doc_, getNode()};
}

xmlXPathObject* tXPathExpr::getResult() const {
    return result_.get();
}

int foreach_xmlnode(const tXPathExpr& expr, const tXmlOperator& op, tErrorFunc onError) {
    const xmlNodeSet* const set = expr.getNodeSet();
    if (set == nullptr) {
        onError(Error<&tError_XmlInternal>().Format(std::string("Can not evaluate XPath expression: ") +
                                                    fromXml(expr.expression_.get())));
        return 0;
    }
    for (int i = 0; i < set->nodeNr; ++i) {
        try {
            op(XmlNode(expr.doc_, set->nodeTab[i]));
        } catch (const ExTraceableBase<ExDefault>& error) {
            onError(error);
        }
    }
    return 1;
}

bool xpathExists(xmlDocPtr doc, const xmlChar* expr, xmlNodePtr node) {
    return xmlXPathCastToBoolean(tXPathExpr(doc, expr, node).getResult()) != 0;
}

XmlNode XmlNode::getNode(const std::string& xpath,
                         const std::map<std::string, std::string>& namespaces) const {
    const tXPathExpr expr(doc_, toXml(xpath), node_, namespaces);
    if (xmlXPathCastToBoolean(expr.getResult()) == 0) {
        BRASK_THROW(tError_XPath_CantEvaluate, withNodePath(xpath, node_));
    }
    return expr.getXmlNode();
}

} // namespace brask
