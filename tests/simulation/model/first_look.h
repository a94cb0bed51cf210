// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/world/witness.h"

namespace orvanta::simulation {

/// What the tray does first: it asks for the status and, when that fails, for the health of whoever
/// listens, and starts a connector unless there was a status. The poll may ask in between.
class FirstLook {
public:
    void requestSent(Purpose purpose, std::int64_t number) {
        if ((purpose == Purpose::status && m_number == 0) ||
            (purpose == Purpose::health && m_isProbeDue)) {
            m_number = number;
            m_isProbeDue = false;
        }
    }
    /// True for the reply that ends it without a status.
    bool endsInVain(const ReplySeen& reply) {
        if (reply.number != m_number) {
            return false;
        }
        m_isProbeDue = reply.purpose == Purpose::status && !reply.meaning;
        return reply.purpose == Purpose::health;
    }

private:
    /// Of the request under way.
    std::int64_t m_number = 0;
    bool m_isProbeDue = false;
};

} // namespace orvanta::simulation
