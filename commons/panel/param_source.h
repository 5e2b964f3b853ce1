#pragma once

// Where the library's parameters come from. The library asks `paramSource` and never reads the configuration
// itself, so that a program built on it can answer from somewhere else.

#include "commons/errors/error.h"

#include <string>

namespace brask {

class ParamSourceStrategy {
public:
    /// The value of the parameter `name`. Raises Error<&ParamError, ExDefault> when there is none.
    virtual std::string getParam(const char* name) const = 0;

    ParamSourceStrategy() = default;
    ParamSourceStrategy(const ParamSourceStrategy&) = delete;
    ParamSourceStrategy& operator=(const ParamSourceStrategy&) = delete;
    virtual ~ParamSourceStrategy() = default;
};

/// Answers from the runtime configuration (lib/runtime/bsa_conf.h) and its compiled defaults, with white
/// space removed from both ends of a value. The name of the administrative account, BSAADM, is fixed: the
/// configuration is neither asked nor loaded for it.
class ParamFromBSAStrategy : public ParamSourceStrategy {
public:
    std::string getParam(const char* name) const override;
};

/// The source of this process. Null until the main program's static initialiser sets it; nothing but that
/// names the concrete class.
extern ParamSourceStrategy* paramSource;

/// paramSource's answer. Raises Error<&ParamError, ExDefault> when there is no source, too.
std::string getParam(const char* name);

} // namespace brask
