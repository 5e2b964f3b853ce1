#pragma once

// brask::Error, the exception that nearly every failure is raised as, and the ways of raising it.
//
//     BRASK_ERROR_TAG(CantOpen, "Cannot open {}: {}")        // at namespace scope: a new error is one tag
//     ...
//     BRASK_THROW(CantOpen, path, strerror(errno));          // raises Error<&CantOpen, ExDefault>

#include "commons/errors/ex_base.h"
#include "commons/errors/format.h"

#include <optional>
#include <source_location>
#include <string>
#include <utility>

/// Defines the tag `name`: a function that gives the tag's name for true and its message template for false.
#define BRASK_ERROR_TAG(name, messageTemplate)                                                               \
    inline const char* name(bool wantName) {                                                                 \
        return wantName ? #name : (messageTemplate);                                                         \
    }

/// Raises Error<&tag, ExDefault> from here, with the arguments filled into the tag's template.
#define BRASK_THROW(tag, ...) BRASK_THROW_AS(tag, ::brask::ExDefault __VA_OPT__(, ) __VA_ARGS__)

/// The same with the severity policy given: ExDefault or ExFatal.
#define BRASK_THROW_AS(tag, Sev, ...) throw ::brask::Error<&tag, Sev>().Format(__VA_ARGS__)

namespace brask {

/// A tag: see BRASK_ERROR_TAG.
using ErrorTag = const char*(bool wantName);

/// A failure named by its tag. One class for each tag and policy, so that a handler can name exactly one
/// failure.
template <ErrorTag* Tag, class Sev = ExDefault>
class Error : public ExTaggedIncludableBase<Sev> {
public:
    /// The location is that of the caller. A default-constructed std::source_location means none.
    explicit Error(const std::source_location& where = std::source_location::current())
        : ExTaggedIncludableBase<Sev>(Tag(true), Tag(false)), location(where) {}

    /// Resolves the message. May be left out for a tag whose template has no placeholder. A template that
    /// fails to format gives "{}: {}" of the failure's text and the template, and raises nothing.
    template <class... Args>
    Error& Format(const Args&... args) {
        text = formatMessage(this->message, args...);
        return *this;
    }

    Error* Clone() const override { return new Error(*this); }

    const char* GetText() const override {
        return text ? text->c_str() : ExTaggedIncludableBase<Sev>::GetText();
    }

    /// OnFunction, OnFile, OnLine (two empty texts and 0 without a location), then what the base tells.
    void Accept(ExInfoVisitor& visitor) const override {
        visitor.OnFunction(location.function_name());
        visitor.OnFile(location.file_name());
        visitor.OnLine(static_cast<int>(location.line()));
        ExTaggedIncludableBase<Sev>::Accept(visitor);
    }

private:
    std::source_location location;
    std::optional<std::string> text;
};

BRASK_ERROR_TAG(AssertionFailed, "Assertion failed: {}")

/// Raises Error<&AssertionFailed, ExDefault> with the condition's text unless `condition` holds, in every
/// build.
inline void requireThat(bool condition, const char* conditionText,
                        const std::source_location& where = std::source_location::current()) {
    if (!condition) {
        throw Error<&AssertionFailed>(where).Format(conditionText);
    }
}

// The tags that more than one unit raises or catches.
BRASK_ERROR_TAG(ParamError, "Can't get param {}: {}")
BRASK_ERROR_TAG(CantRenameFile, "Cannot rename {} to {}: {}")
BRASK_ERROR_TAG(CantTakeFileOwnership, "Cannot take ownership of {}: {}")
BRASK_ERROR_TAG(NoParentNode, "No parent node on requested XML element")
BRASK_ERROR_TAG(NoSuchAttribute, "Node {} does not have attribute {}")
BRASK_ERROR_TAG(tError_XmlInternal, "{}")
BRASK_ERROR_TAG(NotEnoughSpaceAt,
                "Selected filesystem at {} has only {} bytes free, but {} bytes are needed for operation")

} // namespace brask
