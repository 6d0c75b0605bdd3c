// SPDX-License-Identifier: MIT
// Chains and streams for Python.
#ifndef VIREO_PYTHON_CHAIN_H
#define VIREO_PYTHON_CHAIN_H

#include "bridges/python/frames.h"
#include "vireo/vireo.h"

#include <pybind11/pybind11.h>

#include <cstdint>
#include <memory>
#include <string>

namespace vireo::python {

/// The one engine of the process, opened when it is first needed. Throws Failure.
const VireoEngine* engine();

/// A text that the engine handed out, which is freed.
std::string takeText(char* text);

struct Close {
    void operator()(VireoChain* chain) const { vireoChainClose(chain); }
    void operator()(VireoStream* stream) const { vireoStreamClose(stream); }
};

/// A chain that threads may share: changing it while it renders is refused.
class Chain {
public:
    Chain();

    void addText(const std::string& text);
    void addPreset(const std::string& name);
    void addFile(const std::string& path);
    void addSettings(const std::string& text);
    void remove(std::uint32_t position);
    void move(std::uint32_t from, std::uint32_t to);
    void setThreads(std::uint32_t threads);

    std::uint32_t length() const { return vireoChainLength(handle_.get()); }
    std::uint32_t filter(std::uint32_t position) const;
    std::string text() const;
    std::string filterText(std::uint32_t position) const;
    std::string settings() const;

    std::int32_t findParameter(std::uint32_t position, const std::string& name) const;
    void set(std::uint32_t position, std::int32_t parameter, const std::string& value);
    void unset(std::uint32_t position, std::int32_t parameter);
    std::string get(std::uint32_t position, std::int32_t parameter) const;
    bool isSet(std::uint32_t position, std::int32_t parameter) const;
    std::int64_t valueAt(std::uint32_t position, std::int32_t parameter, const VireoTime& time) const;

    VireoNeeds needs() const;

    void render(const pybind11::buffer& source, const pybind11::buffer& result, const PixelOrder& order,
                const VireoTime& time, const pybind11::object& earlier);

private:
    friend class Stream;
    class Rendering;

    /// The chain, to be changed.
    VireoChain* changed();

    std::unique_ptr<VireoChain, Close> handle_;
    int renderings_ = 0;  ///< Under way; the interpreter's lock guards it.
};

class Stream {
public:
    explicit Stream(Chain& chain);

    void render(const pybind11::buffer& source, const pybind11::buffer& result, const PixelOrder& order,
                const VireoTime& time);

private:
    Chain& chain_;
    std::unique_ptr<VireoStream, Close> handle_;
    bool isRendering_ = false;
};

}  // namespace vireo::python

#endif
