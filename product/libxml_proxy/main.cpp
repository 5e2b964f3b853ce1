// Validates an XML document against an XML Schema.
//
//   libxml-proxy --validate-xml --xml-file=DOCUMENT --xsd-file=SCHEMA
//
// Exit status: 0 the document is valid; 11 the schema can't be used; 1 the document is invalid, malformed or
// missing; 2 wrong arguments. For all but 0 an explanation goes to standard output.
//
// Entities that a document defines itself are replaced by their text, as schemas know nothing of entities.
// Nothing else is fetched for a document: no external entity, no DTD. A schema may include others that are
// local files. The network is never used.

#include <libxml/catalog.h>
#include <libxml/parser.h>
#include <libxml/xmlschemas.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

enum Status { BAD_DOCUMENT = 1, BAD_ARGUMENTS = 2, BAD_SCHEMA = 11 };

/// The end of the run, with what is said after libxml2's own complaints.
struct Failure {
    Status status;
    std::string reason;
};

struct Files {
    std::string document;
    std::string schema;
};

template <auto release>
struct Deleter {
    template <class T>
    void operator()(T* object) const {
        release(object);
    }
};

using Parser = std::unique_ptr<xmlParserCtxt, Deleter<xmlFreeParserCtxt>>;
using Document = std::unique_ptr<xmlDoc, Deleter<xmlFreeDoc>>;
using SchemaParser = std::unique_ptr<xmlSchemaParserCtxt, Deleter<xmlSchemaFreeParserCtxt>>;
using Schema = std::unique_ptr<xmlSchema, Deleter<xmlSchemaFree>>;
using Validator = std::unique_ptr<xmlSchemaValidCtxt, Deleter<xmlSchemaFreeValidCtxt>>;

void setUpLibxml(std::string& complaints) {
    // "auto", as the error has become const in libxml2 2.12.
    xmlSetStructuredErrorFunc(&complaints, [](void* text, auto* error) {
        const std::string place = error->file == nullptr ? "" : std::string(error->file) + ":";
        static_cast<std::string*>(text)->append(place + std::to_string(error->line) + ": " + error->message);
    });
    xmlCatalogSetDefaults(XML_CATA_ALLOW_NONE);
}

/// Tells the parser's owner what was wanted.
xmlParserInputPtr refuseToLoad(const char* url, const char* /*id*/, xmlParserCtxtPtr parser) {
    if (parser != nullptr && parser->_private != nullptr) {
        static_cast<std::string*>(parser->_private)->assign(url != nullptr ? url : "?");
    }
    return nullptr;
}

/// Makes a file name one that is no address.
std::string asPath(const std::string& argument, size_t prefix) {
    const std::string name = argument.substr(prefix);
    if (name.empty()) {
        throw Failure{BAD_ARGUMENTS, argument + " names no file"};
    }
    return name.starts_with('/') ? name : "./" + name;
}

Files parseArguments(int argc, const char* const* argv) {
    bool isCommand = false;
    Files files;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--validate-xml") {
            isCommand = true;
        } else if (argument.starts_with("--xml-file=")) {
            files.document = asPath(argument, sizeof "--xml-file=" - 1);
        } else if (argument.starts_with("--xsd-file=")) {
            files.schema = asPath(argument, sizeof "--xsd-file=" - 1);
        } else {
            throw Failure{BAD_ARGUMENTS, "Unknown argument: " + argument};
        }
    }
    if (!isCommand || files.document.empty() || files.schema.empty()) {
        throw Failure{BAD_ARGUMENTS, "Needed are --validate-xml, --xml-file=DOCUMENT and --xsd-file=SCHEMA"};
    }
    return files;
}

/// The open file, which the process keeps to its end.
int openFile(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status = {};
    return fd >= 0 && fstat(fd, &status) == 0 && S_ISREG(status.st_mode) ? fd : -1;
}

Document readDocument(const std::string& path, const Failure& unreadable) {
    const int fd = openFile(path);
    if (fd == -1) {
        throw Failure{unreadable.status, unreadable.reason + path};
    }
    std::string refused;
    const Parser parser(xmlNewParserCtxt());
    parser->_private = &refused;
    xmlSetExternalEntityLoader(refuseToLoad);
    Document document(
        xmlCtxtReadFd(parser.get(), fd, path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOENT));
    if (!document || !refused.empty()) {
        throw Failure{unreadable.status,
                      refused.empty() ? "" : "External entities are not fetched: " + refused};
    }
    return document;
}

void validate(const Files& files) {
    const Document definition = readDocument(files.schema, {BAD_SCHEMA, "The schema cannot be read: "});
    const SchemaParser parser(xmlSchemaNewDocParserCtxt(definition.get()));
    xmlSetExternalEntityLoader(xmlNoNetExternalEntityLoader);
    const Schema schema(xmlSchemaParse(parser.get()));
    if (!schema) {
        throw Failure{BAD_SCHEMA, ""};
    }
    const Document document = readDocument(files.document, {BAD_DOCUMENT, "The document cannot be read: "});
    const Validator validator(xmlSchemaNewValidCtxt(schema.get()));
    if (xmlSchemaValidateDoc(validator.get(), document.get()) != 0) {
        throw Failure{BAD_DOCUMENT, ""};
    }
}

} // namespace

int main(int argc, char** argv) {
    std::string complaints;
    try {
        setUpLibxml(complaints);
        validate(parseArguments(argc, argv));
        return EXIT_SUCCESS;
    } catch (const Failure& failure) {
        std::fputs((complaints + failure.reason + (failure.reason.empty() ? "" : "\n")).c_str(), stdout);
        return failure.status;
    }
}
