#pragma once

// Every rendering of an exception: as text and as XML.

#include "commons/text_formatters.h"
#include "commons/xml_msg_formatter.h"
