// SPDX-License-Identifier: MIT
#include "platform/macos/accessory.h"

#import <AppKit/AppKit.h>

namespace orvanta {

void becomeAccessory() {
    // Not `sharedApplication`, which would connect a terminal's process to the window server.
    [NSApp setActivationPolicy:NSApplicationActivationPolicyAccessory];
}

} // namespace orvanta
