#pragma once

#include <pybind11/pybind11.h>

#include <chrono>
#include <functional>
#include <future>
#include <stop_token>

namespace quillmere::python {

// How long a Ctrl-C may go unnoticed.
inline constexpr std::chrono::milliseconds signalInterval{50};

// Does work(std::stop_token) on a thread of its own and returns what it gives, or throws what it throws.
// Meanwhile other Python threads run, and a signal is noticed: then the work is asked to stop, and what the
// signal's handler raised (KeyboardInterrupt) is thrown when it has. To be called with Python's lock held;
// work runs without it and takes it with gil_scoped_acquire for what it does with Python's objects.
template <typename Work>
auto interruptibly(const Work& work) {
    namespace py = pybind11;
    std::stop_source stop;
    const py::gil_scoped_release released;
    auto result = std::async(std::launch::async, [&] { return work(stop.get_token()); });
    while (result.wait_for(signalInterval) != std::future_status::ready) {
        const py::gil_scoped_acquire held;
        if (PyErr_CheckSignals() == 0) continue;
        const py::error_already_set raised;
        {
            const py::gil_scoped_release again;
            stop.request_stop();
            result.wait();
        }
        throw raised;
    }
    return result.get();
}

// A caller's function that hears of progress, or None. Refers to it: for calls within the function that was
// given it.
template <typename... Arguments>
std::function<void(Arguments...)> listener(const pybind11::object& function) {
    if (function.is_none()) return {};
    return [&function](Arguments... arguments) {
        const pybind11::gil_scoped_acquire held;
        function(arguments...);
    };
}

}  // namespace quillmere::python
