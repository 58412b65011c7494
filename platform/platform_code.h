// Result codes of the sibling modules that the archive configuration only passes on.
#pragma once

namespace platform {

enum platform_code {
    PLATFORM_E_NO_ENDPOINT = -8201 /* not an endpoint of the cluster group */
};

}  // namespace platform
