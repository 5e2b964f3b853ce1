#pragma once

// Checking documents against a DTD, in process, or an XML Schema, through the panel's utility, so that this
// program need not load schema support. All of it returns on a valid document and raises otherwise.

#include "commons/xml/xml_document.h"

#include <libxml/tree.h>
#include <libxml/valid.h>

#include <stdexcept>
#include <string>

namespace brask {

BRASK_ERROR_TAG(InvalidDtdFile, "The DTD file {} is invalid")
BRASK_ERROR_TAG(ExternalDtdValidationFailed,
                "Failed validation of the document with the external DTD {}. The errors are: {}")
BRASK_ERROR_TAG(InternalDtdValidationFailed,
                "Failed validation of the document with its internal DTD. The errors are: {}")

/// A DTD in a file of its own.
class tExternalDtdDoc {
public:
    /// Reads nothing yet.
    explicit tExternalDtdDoc(const std::string& filename) : filename_(filename) {}

    /// Raises InvalidDtdFile. The reason goes to libxml2's generic error handler.
    void readFromFile();

    /// Still owned here; null until readFromFile has run.
    xmlDtd* get() const { return dtd_.get(); }

private:
    std::string filename_;
    ttPtrWrapper<xmlDtd*, xmlFreeDtd> dtd_;
};

/// Warnings of a document that is valid are dropped; those of one that is not are in the text with the
/// errors. Both operations raise tError_XmlInternal when there is no memory.
class tDtdValidator {
public:
    /// Against the DTD in the file `dtdFile`. Raises InvalidDtdFile and ExternalDtdValidationFailed.
    static void validateXml(tXmlDocument& doc, cstring& dtdFile);

    /// Against the document's internal subset; a document without one is not valid. Raises
    /// InternalDtdValidationFailed.
    static void validateXml(tXmlDocument& doc);
};

/// The document does not follow the schema, or could not be checked. The text is the utility's output.
class XmlValidationException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The schema itself cannot be used. The text is the utility's output.
class XsdNotValidException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Checks a file against a schema file with the panel's utility libxml-proxy. Raises XsdNotValidException or
/// XmlValidationException; a utility that cannot start is one of the second kind.
void validateXmlAgainstXsd(cstring& xmlFile, cstring& xsdFile);

} // namespace brask
