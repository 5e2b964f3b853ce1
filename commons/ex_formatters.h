#pragma once

// Every rendering of an exception: as text and as XML.

#include "commons/errors/text_formatters.h"
#include "commons/xml/xml_msg_formatter.h"
