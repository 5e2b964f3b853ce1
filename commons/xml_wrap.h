#pragma once

// Looking into an XML document: XPath expressions and node values.

#include "commons/xml/xml_node.h"
#include "commons/xml/xpath_expr.h"
