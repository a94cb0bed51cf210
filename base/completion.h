// SPDX-License-Identifier: MIT
#pragma once

#include "base/task.h"

#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace orvanta {

/// The two ends of one wait: a service keeps the `Completion`, a coroutine awaits its `Waiter`.
///
/// Main thread only. The first `decide` counts; later ones do nothing. The coroutine resumes inside
/// that call. When the last copy of the `Completion` goes away undecided, the coroutine resumes
/// with `TaskAbandoned`, so that no wait outlives its service.
template <typename T>
class Completion {
    struct State {
        std::optional<T> value;
        bool isAbandoned = false;
        std::coroutine_handle<> waiter;

        bool isDecided() const { return value.has_value() || isAbandoned; }
        void resume() {
            if (auto handle = std::exchange(waiter, nullptr)) {
                handle.resume();
            }
        }
    };

    /// Its destruction is how the state learns that nobody can decide any more.
    struct Producer {
        std::shared_ptr<State> state = std::make_shared<State>();

        Producer() = default;
        Producer(const Producer&) = delete;
        Producer& operator=(const Producer&) = delete;
        ~Producer() {
            if (!state->isDecided()) {
                state->isAbandoned = true;
                state->resume();
            }
        }
    };

public:
    class Waiter {
    public:
        explicit Waiter(std::shared_ptr<State> state) : m_state(std::move(state)) {}
        bool await_ready() const { return m_state->isDecided(); }
        void await_suspend(std::coroutine_handle<> handle) { m_state->waiter = handle; }
        T await_resume() {
            if (m_state->isAbandoned) {
                throw TaskAbandoned{};
            }
            return std::move(*m_state->value);
        }

    private:
        std::shared_ptr<State> m_state;
    };

    Completion() : m_producer(std::make_shared<Producer>()) {}

    /// To be awaited by exactly one coroutine.
    Waiter wait() const { return Waiter(m_producer->state); }

    void decide(T value) const {
        auto state = m_producer->state;
        if (!state->isDecided()) {
            state->value.emplace(std::move(value));
            state->resume();
        }
    }

private:
    std::shared_ptr<Producer> m_producer;
};

/// The value of a `Completion` that only says that something has ended.
struct Done {};

} // namespace orvanta
