#pragma once

// The tags that more than one unit raises or catches.

#include "commons/errors/error.h"

namespace brask {

BRASK_ERROR_TAG(ParamError, "Can't get param {}: {}")
BRASK_ERROR_TAG(CantRenameFile, "Cannot rename {} to {}: {}")
BRASK_ERROR_TAG(CantTakeFileOwnership, "Cannot take ownership of {}: {}")
BRASK_ERROR_TAG(NoParentNode, "No parent node on requested XML element")
BRASK_ERROR_TAG(NoSuchAttribute, "Node {} does not have attribute {}")
BRASK_ERROR_TAG(tError_XmlInternal, "{}")
BRASK_ERROR_TAG(NotEnoughSpaceAt,
                "Selected filesystem at {} has only {} bytes free, but {} bytes are needed for operation")

} // namespace brask
