#pragma once

// The base classes of the exception family: what every failure of the library knows about itself. The
// classes that are thrown are in error.h and exc.h.

#include "commons/errors/severity.h"

#include <memory>
#include <stdexcept>
#include <string>

/// An object that can make a copy of itself without its class being known.
class Cloneable {
public:
    Cloneable() = default;
    Cloneable(const Cloneable&) = default;
    Cloneable& operator=(const Cloneable&) = default;
    virtual ~Cloneable() = default;

    /// A new heap copy of the most derived class, owned by the caller.
    virtual Cloneable* Clone() const = 0;
};

namespace brask {

/// Receives the facts of an exception one by one, in the order that IExTraceable::Accept sends them.
class ExInfoVisitor {
public:
    ExInfoVisitor() = default;
    ExInfoVisitor(const ExInfoVisitor&) = default;
    ExInfoVisitor& operator=(const ExInfoVisitor&) = default;
    virtual ~ExInfoVisitor() = default;

    virtual void OnName(const std::string& tagName) = 0;
    virtual void OnMessage(const std::string& message) = 0;
    virtual void OnFunction(const std::string& function) = 0;
    virtual void OnFile(const std::string& file) = 0;
    virtual void OnLine(int line) = 0;
    /// What follows comes from the included exception.
    virtual void OnInner() = 0;
    virtual void OnSeverity(int severity) = 0;
};

class ExVisitable {
public:
    ExVisitable() = default;
    ExVisitable(const ExVisitable&) = default;
    ExVisitable& operator=(const ExVisitable&) = default;
    virtual ~ExVisitable() = default;

    /// Sends the facts to `visitor`. A visitor that throws ends it; it keeps what it got so far.
    virtual void Accept(ExInfoVisitor& visitor) const = 0;
};

/// Any failure of the family, whatever its severity policy.
class IExTraceable : public Cloneable, public ExVisitable, public std::runtime_error {
public:
    using std::runtime_error::runtime_error;

    IExTraceable* Clone() const override = 0;
    virtual int GetSeverity() const = 0;
    /// The human message; valid as long as the object lives.
    virtual const char* GetText() const = 0;
    void Accept(ExInfoVisitor& visitor) const override = 0;

    /// The human message, never the tag name.
    const char* what() const noexcept override { return GetText(); }
};

/// The severity policies. They carry no data: what they change is the class of the exception, so that a
/// handler for ExTraceableBase<ExDefault> lets an ExFatal error pass. That is the whole mechanism of a fatal
/// error.
struct ExDefault {};

struct ExFatal {};

/// A message with a tag name and a severity. Thrown by nobody; the logs build it for a plain text.
template <class Sev>
class ExTraceableBase : public IExTraceable {
public:
    /// `tagName` may be empty. `message` is a ready text or a format template.
    ExTraceableBase(const std::string& tagName, const std::string& message)
        : IExTraceable(tagName), message(message) {}

    /// The copy holds the resolved text of `other` as its message: the template does not survive a copy.
    ExTraceableBase(const ExTraceableBase& other)
        : IExTraceable(other), message(other.GetText()), severity(other.severity) {}

    ExTraceableBase& operator=(const ExTraceableBase&) = delete;

    ExTraceableBase* Clone() const override { return new ExTraceableBase(*this); }

    int GetSeverity() const override { return severity; }

    const char* GetText() const override { return message.c_str(); }

    /// OnName, OnSeverity, OnMessage.
    // The qualified call reaches the tag name, which the override of what() hides.
    void Accept(ExInfoVisitor& visitor) const override {
        visitor.OnName(std::runtime_error::what());
        visitor.OnSeverity(GetSeverity());
        visitor.OnMessage(GetText());
    }

protected:
    std::string message;
    // Every exception is a warning, an ExFatal one too; the logs' own level decides what a reader sees.
    int severity = severity::kWarning;
};

/// An exception that may include the one which caused it, and owns it.
template <class Sev>
class ExTaggedIncludableBase : public ExTraceableBase<Sev> {
public:
    using ExTraceableBase<Sev>::ExTraceableBase;

    /// Deep: each exception owns its whole chain.
    ExTaggedIncludableBase(const ExTaggedIncludableBase& other)
        : ExTraceableBase<Sev>(other), inner(other.inner ? other.inner->Clone() : nullptr) {}

    ExTaggedIncludableBase& operator=(const ExTaggedIncludableBase&) = delete;

    ExTaggedIncludableBase* Clone() const override { return new ExTaggedIncludableBase(*this); }

    /// Keeps a copy of `cause`, in place of the one that was kept before.
    void Include(const IExTraceable& cause) { inner.reset(cause.Clone()); }

    /// What the base tells, then OnInner and the included exception if there is one.
    void Accept(ExInfoVisitor& visitor) const override {
        ExTraceableBase<Sev>::Accept(visitor);
        if (inner) {
            visitor.OnInner();
            inner->Accept(visitor);
        }
    }

private:
    std::unique_ptr<IExTraceable> inner;
};

} // namespace brask
