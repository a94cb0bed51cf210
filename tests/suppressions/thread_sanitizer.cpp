// SPDX-License-Identifier: MIT
// What every program under the thread sanitizer is told, the tray included, wherever it is started.
// No name of ours belongs below: a race in our own code is to be mended.

extern "C" {

/// A tray that goes on after a report would pass whatever test does not look at its exit status.
/// A QProcess, which only tests have, starts its program in the memory of its parent, and the
/// sanitizer takes that for a fork among threads.
[[gnu::visibility("default")]] const char* __tsan_default_options() {
    // Tests ask for more memory than there can be.
    return "halt_on_error=1:die_after_fork=0:allocator_may_return_null=1";
}

/// Libraries that are compiled without the sanitizer and order their threads by locks of their own,
/// which it cannot see. What they allocate, copy and lock themselves is left out; what our code
/// does before and after a call of them, and in their callbacks, is watched.
[[gnu::visibility("default")]] const char* __tsan_default_suppressions() {
    return
        // QMutex is a futex: the list of posted events grows, by realloc, on any thread.
        "called_from_lib:libQt6Core.so\n"
        // Its thread reads the bus and hands messages to the main thread under such locks.
        "called_from_lib:libQt6DBus.so\n"
        // What the menu says on the bus is made on the main thread and freed on the bus's.
        "called_from_lib:libQt6Gui.so\n"
        // Its events are read on a thread of the toolkit's and freed on the main one. Not left out
        // whole: it unlocks by jumps that look like calls from whoever called it.
        "race:libxcb.so\n"
        // Wakes the loop of another thread through a descriptor which that thread has made, and
        // learnt of under such a lock.
        "called_from_lib:libglib-2.0.so\n"
        // Counts its messages by atomics that the sanitizer does not see, and takes its locks in
        // either order, on the one thread that Qt has for the bus.
        "called_from_lib:libdbus-1.so\n";
}

} // extern "C"
