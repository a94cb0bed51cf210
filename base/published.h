// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <utility>
#include <vector>

namespace orvanta {

/// Announces that one of an object's published properties is about to change. Observers are
/// called before the new value is stored, so they may only note that a redraw is due: on a later
/// turn of the loop, or when the object says that its properties have settled.
class WillChange {
public:
    /// `willChange` is called before each change; `settled` when what was announced is stored and
    /// need not wait for a turn of the loop to be drawn. Both are kept for the life of this object;
    /// neither may throw or observe anew.
    void observe(std::function<void()> willChange, std::function<void()> settled = {}) {
        m_observers.push_back({std::move(willChange), std::move(settled)});
    }

    void announce() const {
        for (const auto& observer : m_observers) {
            observer.willChange();
        }
    }

    /// For the object itself, when it goes on in the same turn with work that nobody sees.
    void settle() const {
        for (const auto& observer : m_observers) {
            if (observer.settled) {
                observer.settled();
            }
        }
    }

private:
    struct Observer {
        std::function<void()> willChange;
        std::function<void()> settled;
    };

    std::vector<Observer> m_observers;
};

/// A property that front ends draw. Setting it to another value first tells the observers of
/// `announcer`, which must outlive it; setting it to the value it has tells nobody.
template <typename T>
class Published {
public:
    Published(const WillChange& announcer, T initial)
        : m_announcer(announcer), m_value(std::move(initial)) {}

    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    const T& value() const { return m_value; }
    const T& operator*() const { return m_value; }
    const T* operator->() const { return &m_value; }

    void set(T value) {
        if (m_value == value) {
            return;
        }
        m_announcer.announce();
        m_value = std::move(value);
    }

private:
    const WillChange& m_announcer;
    T m_value;
};

} // namespace orvanta
