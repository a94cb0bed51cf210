// SPDX-License-Identifier: MIT
#include "integration/open_descriptors.h"

#include <cstdlib>
#include <dirent.h>

namespace orvanta {

std::set<int> openDescriptors() {
    std::set<int> descriptors;
    DIR* directory = ::opendir("/dev/fd");
    while (const dirent* entry = ::readdir(directory)) {
        const int descriptor = std::atoi(entry->d_name);
        if (entry->d_name[0] != '.' && descriptor != ::dirfd(directory)) {
            descriptors.insert(descriptor);
        }
    }
    ::closedir(directory);
    return descriptors;
}

} // namespace orvanta
