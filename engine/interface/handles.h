// SPDX-License-Identifier: MIT
// What the handles of the C interface point to, and how failures leave it.
#ifndef VIREO_ENGINE_INTERFACE_HANDLES_H
#define VIREO_ENGINE_INTERFACE_HANDLES_H

#include "engine/catalogue/catalogue.h"
#include "engine/chain/filter_chain.h"
#include "engine/chain/worker_pool.h"
#include "engine/error.h"
#include "engine/include/vireo/vireo.h"
#include "engine/settings/chain_settings.h"
#include "host/hosting/filter_traits.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// A filter's texts in one language, as descriptions point to them.
struct FilterTexts {
    std::string name, category, key, fileName;
    struct Parameter {
        std::string name, label, unit;
        std::vector<std::string> choices;
        bool inPixels = false;
    };
    std::vector<Parameter> parameters;
    std::vector<std::uint8_t> initialRecord;
    std::uint32_t depths = VireoDepth8;
};

/// What an engine and everything made from it share.
struct Library {
    std::shared_ptr<const hosting::MetaPlugin> module;
    Catalogue catalogue;
    std::vector<FilterTexts> texts;

    Library(std::shared_ptr<const hosting::MetaPlugin> loaded, std::uint16_t language);
};

/// A chain that is ready to render, with the threads that it renders on.
struct BuiltChain {
    FilterChain chain;
    std::shared_ptr<WorkerPool> workers;
};

/// Remembers why a call failed, for vireoLastError(). `text` is what the call was given to read.
VireoStatus remember(const Error& error, std::string_view text) noexcept;
VireoStatus remember(VireoStatus status, const char* sentence) noexcept;

/// Runs what may throw.
template <class Work>
VireoStatus guarded(Work&& work, const char* text = nullptr) noexcept {
    try {
        work();
        return VireoDone;
    } catch (const Error& error) {
        return remember(error, text == nullptr ? std::string_view() : std::string_view(text));
    } catch (const std::bad_alloc&) {
        return remember(VireoNoMemory, "there is not enough memory");
    } catch (const std::exception& error) {
        return remember(VireoFailed, error.what());
    } catch (...) {
        return remember(VireoFailed, "the filter failed");
    }
}

/// Refuses null arguments. Throws Error.
template <class... Pointers>
void require(const Pointers*... pointers) {
    const bool isMissing = ((pointers == nullptr) || ...);
    if (isMissing) throw Error(Fault::Usage, "an argument that must not be null is null");
}
void require(bool condition, const char* sentence);

/// The number that a caller gave for one of few: C lets it be any, of which C++ must not make a value.
template <class Enumeration>
std::int32_t numberOf(const Enumeration& given) {
    std::int32_t number;
    static_assert(sizeof number == sizeof given);
    std::memcpy(&number, &given, sizeof number);
    return number;
}

/// A copy that vireoFree() frees. Throws std::bad_alloc.
char* copyOf(std::string_view text);

/// A struct of the caller's as this version knows it: members beyond its size are as in a fresh one. Sizes of
/// structs are multiples of what they are aligned to; of any other the rest could be half a pointer.
template <class Struct>
Struct read(const Struct* given) {
    Struct known{};
    if (given == nullptr) return known;
    require(given->structSize >= sizeof given->structSize, "a struct does not tell its size");
    const std::size_t size = given->structSize / alignof(Struct) * alignof(Struct);
    std::memcpy(&known, given, std::min(size, sizeof known));
    return known;
}

/// Fills in as much of a struct as the caller has.
template <class Struct>
void write(Struct filled, Struct* given) {
    require(given->structSize >= sizeof given->structSize, "a struct does not tell its size");
    filled.structSize = given->structSize;
    std::memcpy(given, &filled, std::min<std::size_t>(given->structSize, sizeof filled));
}

/// The position that a caller means; a null one is the first frame.
FramePosition positionOf(const VireoTime* time);

}  // namespace vireo

struct VireoEngine {
    std::shared_ptr<const vireo::Library> library;
};

struct VireoChain {
    std::shared_ptr<const vireo::Library> library;
    vireo::ChainSettings settings;
    std::uint32_t threads = 1;

    explicit VireoChain(std::shared_ptr<const vireo::Library> opened)
        : library(std::move(opened)), settings(library->catalogue) {}

    /// The settings as a chain that renders, made when it is first asked for after a change. Null for an
    /// empty chain. Throws Error.
    std::shared_ptr<const vireo::BuiltChain> built() const;

    /// Something changed: the next frame is rendered by another chain, on the same threads.
    void changed();

private:
    mutable std::mutex mutex_;
    mutable std::shared_ptr<const vireo::BuiltChain> built_;
    mutable std::shared_ptr<vireo::WorkerPool> workers_;
};

#endif
