#pragma once

// Looking into an XML document: XPath expressions and node values, under one name.

#include "commons/xml_node.h"
#include "commons/xpath_expr.h"
