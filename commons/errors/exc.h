#pragma once

// brask::Exc, the older sibling of brask::Error: its template is boost::format's, its arguments are fed one
// by one, and its location is given by hand. New failures are raised as Error.

#include "commons/errors/error.h"

#include <boost/format.hpp>

#include <string>
#include <utility>

namespace brask {

template <ErrorTag* Tag, class Sev = ExDefault>
class Exc : public ExTaggedIncludableBase<Sev> {
public:
    Exc(std::string function, std::string file, int line)
        : ExTaggedIncludableBase<Sev>(Tag(true), Tag(false)), function(std::move(function)),
          file(std::move(file)), line(line) {}

    /// Feeds the next argument of the template.
    template <class T>
    Exc& operator%(const T& value) {
        if (!fed) {
            fed = true;
            fmt.parse(this->message);
        }
        fmt % value;
        return *this;
    }

    Exc* Clone() const override { return new Exc(*this); }

    /// The template itself until an argument was fed, afterwards the text, rendered anew at each call.
    /// Arguments that are missing give "{}: {}" of the failure's text and the template.
    const char* GetText() const override {
        if (!fed) {
            return ExTaggedIncludableBase<Sev>::GetText();
        }
        try {
            rendered = fmt.str();
        } catch (const boost::io::format_error& e) {
            rendered = (boost::format("%1%: %2%") % e.what() % this->message).str();
        }
        return rendered.c_str();
    }

    /// OnFunction, OnFile, OnLine, then what the base tells.
    void Accept(ExInfoVisitor& visitor) const override {
        visitor.OnFunction(function);
        visitor.OnFile(file);
        visitor.OnLine(line);
        ExTaggedIncludableBase<Sev>::Accept(visitor);
    }

private:
    boost::format fmt;
    bool fed = false;
    mutable std::string rendered;
    std::string function;
    std::string file;
    int line;
};

} // namespace brask
