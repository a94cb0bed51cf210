// SPDX-License-Identifier: MIT
#include "platform/macos/login_item.h"

#include "base/platform_error.h"

#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>

namespace orvanta {
namespace {

PlatformError platformError(NSError* error) {
    return PlatformError(QString::fromUtf8(error.domain.UTF8String), static_cast<int>(error.code),
                         QString::fromUtf8(error.localizedDescription.UTF8String));
}

/// The system has taken the registration and asks the user, without telling the application.
PlatformError waitsForApproval() {
    return PlatformError(QStringLiteral("OrvantaMacLoginItem"), 1,
                         QStringLiteral("Orvanta waits for approval in System Settings > General > "
                                        "Login Items."));
}

} // namespace

bool MacLoginItem::isEnabled() const {
    return SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
}

void MacLoginItem::registerItem() {
    NSError* error = nil;
    if (![SMAppService.mainAppService registerAndReturnError:&error]) {
        throw platformError(error);
    }
    if (!isEnabled()) {
        throw waitsForApproval();
    }
}

void MacLoginItem::unregisterItem() {
    NSError* error = nil;
    if (![SMAppService.mainAppService unregisterAndReturnError:&error]) {
        throw platformError(error);
    }
}

} // namespace orvanta
