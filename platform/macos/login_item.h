// SPDX-License-Identifier: MIT
#pragma once

#include "platform/login_item.h"

namespace orvanta {

/// The application among the system's login items.
class MacLoginItem : public LoginItem {
public:
    bool isEnabled() const override;
    void registerItem() override;
    void unregisterItem() override;
};

} // namespace orvanta
