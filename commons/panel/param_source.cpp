#include "commons/panel/param_source.h"

#include "lib/runtime/bsa_conf.h"

#include <boost/algorithm/string/trim.hpp>

#include <string_view>

namespace brask {

ParamSourceStrategy* paramSource = nullptr;

std::string ParamFromBSAStrategy::getParam(const char* name) const {
    using namespace std::string_view_literals;
    if (name == "BSAADM"sv) {
        return "bsaadm";
    }
    const char* value = bsaConfGetDefault(name);
    if (value == nullptr) {
        BRASK_THROW(ParamError, name, "bsaConfGetDefault() returned NULL");
    }
    return boost::algorithm::trim_copy(std::string(value));
}

std::string getParam(const char* name) {
    if (paramSource == nullptr) {
        BRASK_THROW(ParamError, name, "no parameter source is set");
    }
    return paramSource->getParam(name);
}

} // namespace brask
