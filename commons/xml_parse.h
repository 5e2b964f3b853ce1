#pragma once

// Reading, building and writing XML documents, under one name.

#include "commons/xml_document.h"
#include "commons/xml_entity_loader.h"
#include "commons/xml_ptr.h"
