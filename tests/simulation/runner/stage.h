// SPDX-License-Identifier: MIT
#pragma once

#include "simulation/model/model.h"
#include "simulation/script/script.h"
#include "simulation/world/world.h"

namespace orvanta::simulation {

/// Carries the events of a script out.
class Stage {
public:
    explicit Stage(bool isTalking);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    void perform(const Event& event);
    /// Up to that moment or the first violation.
    void runUntil(Moment moment);
    /// The world becomes dull, the user chooses Restart: the connector has to come up.
    void recover();

    World& world() { return m_world; }
    Model& model() { return m_model; }

private:
    void startTray();
    void quit(Moment linger);
    void endTray();
    void click(MenuEntryId entry);
    void clickAll();
    void sleep(Moment duration);
    void damage(std::int64_t way);
    Connector* newest() const;

    World m_world;
    Model m_model{m_world};
    int m_life = 0;
};

} // namespace orvanta::simulation
