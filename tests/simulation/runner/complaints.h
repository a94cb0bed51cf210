// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace orvanta::simulation {

/// Listens to standard error, where tasks complain about errors that nobody takes. One at a time.
class Complaints {
public:
    Complaints();
    ~Complaints();
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;

    /// All that was written since the beginning.
    std::string heard() const;

private:
    int m_file = -1;
    int m_standardError = -1;
};

} // namespace orvanta::simulation
