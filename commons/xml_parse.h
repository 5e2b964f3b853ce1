#pragma once

// Reading, building, writing and validating XML documents.

#include "commons/xml/xml_document.h"
#include "commons/xml/xml_globals.h"
#include "commons/xml/xml_ptr.h"
#include "commons/xml/xml_validation.h"
