#pragma once

namespace brask {

/// Keeps every parse of this process from loading anything but the document (or DTD) that it was asked for:
/// an external subset, an external entity or the like is refused, and libxml2 goes on as with any entity that
/// it cannot load. Together with XML_PARSE_NONET that is the whole protection against external entities.
/// Catalogs are switched off.
/// Call it once at the start of a run, before any document is read. A second call changes nothing.
void installExternalEntityLoader();

} // namespace brask
