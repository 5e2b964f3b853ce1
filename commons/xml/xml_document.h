#pragma once

// Owners of libxml2 documents.
//
// Callers work with libxml2's own nodes, so the document and the root are public here. A node belongs to its
// document: no xmlNode* outlives the last copy of the owner that it was got from.
//
// WARNING: a parse sends libxml2's generic error text into a buffer of its own. A parse that succeeds puts
// libxml2's default handler back; a parse that fails does NOT, and its buffer is gone by then. Who goes on
// after tError_ParseFile and may trigger a libxml2 error outside a further parse (a failing XPath expression,
// say) holds an XmlErrorsReset (xml_globals.h) round the parse.

#include "commons/errors/error.h"
#include "commons/xml/xml_ptr.h"

#include <libxml/tree.h>

#include <filesystem>
#include <iosfwd>
#include <string>

namespace brask {

BRASK_ERROR_TAG(tError_ParseFile,
                "The XML file {} was not parsed successfully with the following errors:\n{}")
BRASK_ERROR_TAG(tError_WrongInputFile,
                "The XML file does not exist or is not a regular file. Check the file '{}'")
BRASK_ERROR_TAG(tError_SaveFile, "Cannot save the XML document to file '{}'")
BRASK_ERROR_TAG(tError_WrongContent, "{}")
BRASK_ERROR_TAG(tError_EmptyDoc, "The document is empty. Cannot find the root element <{}>")
BRASK_ERROR_TAG(tError_WrongDoc,
                "The document has the wrong type, the root node is <{1}>, but <{0}> was expected")

/// One document, read or built. A copy shares it.
class tXmlDocument {
public:
    /// A new, empty document. Raises tError_XmlInternal when there is no memory for it.
    tXmlDocument();

    /// Reads a file; as readFromFile.
    explicit tXmlDocument(const char* filename);
    explicit tXmlDocument(const std::filesystem::path& path);

    /// Parses `content`, which must be below 2 GiB. Raises AssertionFailed when it is empty, tError_ParseFile
    /// with the file name "-" when it is not well-formed to its end: a zero byte is no end.
    explicit tXmlDocument(const std::string& content);

    tXmlDocument(const tXmlDocument&) = default;
    tXmlDocument& operator=(const tXmlDocument&) = default;
    virtual ~tXmlDocument() = default;

    /// As saveToFile(path.c_str(), nullptr).
    virtual void saveToFile(const std::string& path);

    /// Writes the document to standard output, returns 0.
    virtual int saveToStdout();

    /// Replaces the document with a new, empty one. Raises tError_XmlInternal.
    void createNewDoc();

    /// Replaces the document with that of a file; "-" reads standard input. Nothing is fetched from the
    /// network, no DTD is loaded, no entity is substituted. Returns 1. Raises AssertionFailed on a null or
    /// empty name, tError_WrongInputFile unless the name leads to a regular file, and tError_ParseFile with
    /// libxml2's text: then the old document is gone and doc_ holds null.
    int readFromFile(const char* filename);

    /// Writes the document to the file of exactly this name, "-" meaning standard output. A null `encoding`
    /// keeps the document's own. Raises AssertionFailed on a null or empty name, tError_SaveFile when it
    /// cannot be written as a whole.
    void saveToFile(const char* filename, const char* encoding);

    /// Writes the document to `buffer`, which libxml2 closes and frees. Returns 1. Raises AssertionFailed on
    /// a null buffer, tError_SaveFile.
    int saveToBuffer(xmlOutputBufferPtr buffer);

    /// Writes the document to `stream`. Always returns 1: a failed write shows in the stream's state alone.
    int saveToStream(std::ostream& stream, const char* encoding);

    /// Replaces the file `path` in one step with the document, owned by the panel's administrative account
    /// with its primary group, mode 0600. Written through the virtual saveToFile. The last step is tried as
    /// often as the settings say; with zero attempts the target keeps its old content, and nothing is raised.
    /// On any failure an existing target is as it was, and the temporary file "bmm-xp-stfa-NAME-XXXXXX"
    /// beside it stays. A bare file name puts that file into the directory of temporary files, from where the
    /// last step may have to cross file systems: that fails on an existing target, and a new one may be left
    /// incomplete when it fails. Raises what BMM_getTempFileName and
    /// saveToFile raise, CantTakeFileOwnership, CantRenameFile.
    void saveToFileAtomically(const std::string& path);

    ttPtrWrapper<xmlDoc*, xmlFreeDoc> doc_;
};

/// A document of known type: its root element, and small builders. No builder looks at the result of the
/// libxml2 call. Every text is UTF-8 and ends at its first zero byte, CDATA excepted.
class tXmlBmmDocument : public tXmlDocument {
public:
    /// As the base; root_ is null until an init operation has run.
    tXmlBmmDocument() = default;
    explicit tXmlBmmDocument(const char* filename);
    explicit tXmlBmmDocument(const std::string& content);

    /// A new document with `node` as its root. A node that already belongs to a document is copied with all
    /// that is below it and stays untouched; one that belongs to none is taken over, and the caller must not
    /// free it. Raises tError_XmlInternal when the copy fails.
    explicit tXmlBmmDocument(xmlNodePtr node);

    /// Gives a document that has no root a new root element, returns 1. Raises tError_XmlInternal.
    int initNewDoc(const char* rootName);

    /// Takes the root of a document that was read, returns 1. A null `rootName` accepts any name. Raises
    /// tError_EmptyDoc when there is no root (`rootName` must not be null then), tError_WrongDoc when it has
    /// another name.
    int initFileDoc(const char* rootName);

    /// The first child of the root named `name`, never null. Raises tError_WrongContent when there is none.
    xmlNode* getRootNodeChild(const char* name) const;

    /// Raises NoSuchAttribute. An attribute with an empty value is there.
    std::string getAttribute(xmlNode* node, cstring& name) const;

    /// The text directly in `node`, entities substituted; empty when there is none.
    std::string getText(xmlNode* node) const;

    /// Takes all elements and attributes of the document out of the namespace `href`, and removes its
    /// declarations. No effect while root_ is null.
    void removeNamespace(cstring& href);

    /// A new child element at the end of `parent`.
    xmlNode* addChild(xmlNode* parent, cstring& name);

    /// The same with text in it, which libxml2 escapes.
    xmlNode* addTextChild(xmlNode* parent, cstring& name, cstring& content);

    /// A CDATA section at the end of `parent`; `content` must be below 2 GiB.
    xmlNode* addCData(xmlNode* parent, cstring& content);

    /// Text at the end of `parent`. Text that follows text is joined with it: the result is then the node
    /// that was there.
    xmlNode* addText(xmlNode* parent, cstring& content);

    /// Adds an attribute or replaces its value.
    xmlAttr* setAttribute(xmlNode* node, cstring& name, cstring& value);

    static bool nodeNameIs(const xmlChar* nodeName, cstring& name);

    xmlNode* root_ = nullptr;
};

/// The first child of `node` with the name `name`, or null. The type of the child plays no part: a text child
/// carries the name "text". Raises AssertionFailed on a null node.
xmlNode* getXmlChild(xmlNodePtr node, const char* name);

// The steps that the atomic saves of documents and of elements share. Both write a new file beside the
// target, hand it over and move it into the target's place. Nothing is synced to the disk, and the new file
// stays on any failure, as what an operator has left of the content.

/// Makes an empty file beside `target` and returns its path. A bare file name has no directory, and its file
/// is made in the directory of temporary files. Raises what BMM_getTempFileName raises.
std::string makeFileBeside(const std::filesystem::path& target, const std::string& prefix);

/// Hands `file` over to the panel's administrative account with its primary group. An unknown account reads
/// as root. Raises CantTakeFileOwnership.
void giveToPanel(const std::string& file);

} // namespace brask
