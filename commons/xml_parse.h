#pragma once

// Reading, building, writing and validating XML documents, under one name.

#include "commons/xml_document.h"
#include "commons/xml_entity_loader.h"
#include "commons/xml_ptr.h"
#include "commons/xml_validation.h"
