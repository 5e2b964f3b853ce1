#pragma once

// Ownership of what libxml2 allocates, and the way between its text and ours.

#include <libxml/globals.h>
#include <libxml/xmlstring.h>

#include <memory>
#include <string>

namespace brask {

using cstring = const std::string;

/// The shared owner of a libxml2 object: copies hold the same object, and the last one releases it with
/// `deleter`. An empty owner holds null, which `deleter` is called with as well: libxml2's own functions
/// accept it, all but xmlFreeValidCtxt, so that an owner of that kind must never be empty. Assign another
/// owner to let go of the object.
template <class T, void (*deleter)(T)>
class ttPtrWrapper {
public:
    ttPtrWrapper() : ttPtrWrapper(nullptr) {}

    /// Takes `raw` over, which may be null. If that fails for lack of memory, `raw` is released.
    explicit ttPtrWrapper(T raw) : wrapper_(adopt(raw)) {}

    /// The object, still owned here, or null.
    T get() const { return wrapper_->raw; }

private:
    struct TWrapper {
        explicit TWrapper(T raw) : raw(raw) {}

        TWrapper(const TWrapper&) = delete;
        TWrapper& operator=(const TWrapper&) = delete;

        ~TWrapper() { deleter(raw); }

        const T raw;
    };

    static std::shared_ptr<TWrapper> adopt(T raw) {
        try {
            return std::make_shared<TWrapper>(raw);
        } catch (...) {
            deleter(raw);
            throw;
        }
    }

    std::shared_ptr<TWrapper> wrapper_;
};

/// Releases a string that libxml2 allocated; null is accepted.
inline void bmmFreeXmlChar(xmlChar* text) {
    xmlFree(text);
}

/// The owner of a string that libxml2 allocated.
using tXmlCharPtr = ttPtrWrapper<unsigned char*, bmmFreeXmlChar>;

/// The same characters as libxml2 takes them; valid as long as `text` is.
inline const xmlChar* toXml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

inline const xmlChar* toXml(cstring& text) {
    return toXml(text.c_str());
}

/// The same characters as the rest of the program takes them; valid as long as `text` is.
inline const char* fromXml(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

} // namespace brask
