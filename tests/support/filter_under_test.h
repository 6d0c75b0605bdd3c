// SPDX-License-Identifier: MIT
// A filter as a host calls it.
#ifndef VIREO_TESTS_SUPPORT_FILTER_UNDER_TEST_H
#define VIREO_TESTS_SUPPORT_FILTER_UNDER_TEST_H

#include "host/hosting/meta_plugin.h"
#include "host/pixkit/pixel_formats.h"
#include "host/vrm/filter_invocation.h"
#include "tests/support/test_frame.h"

#include <concepts>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <span>
#include <vector>

/// The module lies beside the program.
std::filesystem::path testedModule();
const std::vector<hosting::Filter>& testedFilters();
std::vector<std::uint32_t> filterIds();

/// Values as they lie in settings records.
template <std::integral Value>
std::vector<std::uint8_t> littleEndian(std::initializer_list<Value> values) {
    std::vector<std::uint8_t> bytes(values.size() * sizeof(Value));
    std::memcpy(bytes.data(), values.begin(), bytes.size());
    return bytes;
}

/// An invocation of one filter on the reference host, without settings or frames at first. Fields of the
/// record that have no function here are set directly.
class FilterUnderTest {
public:
    /// Throws std::out_of_range for an unknown id.
    explicit FilterUnderTest(std::uint32_t id);
    FilterUnderTest(const FilterUnderTest&) = delete;
    FilterUnderTest& operator=(const FilterUnderTest&) = delete;
    ~FilterUnderTest();

    FilterInvocation invocation{};
    /// What the host tells of the source's pixels while the filter renders.
    std::uint32_t pixelFormat = PixKit::formatBgra;

    /// Replaces the settings handle by one of exactly these bytes.
    void setSettings(std::span<const std::uint8_t> bytes);
    template <std::integral Value>
    void setSettings(std::initializer_list<Value> values) {
        setSettings(littleEndian(values));
    }
    template <class Record>
    requires std::is_class_v<Record>
    void setRecord(const Record& record) {
        setSettings({reinterpret_cast<const std::uint8_t*>(&record), sizeof record});
    }
    void dropSettings();
    /// The bytes that the handle holds; empty without one.
    std::vector<std::uint8_t> settings() const;

    std::int32_t call(std::int16_t selector);
    /// Execute, which has to answer 0.
    void render(TestFrame& source, TestFrame& destination);
    /// The same into a new frame of the source's geometry with random pixels, whose guards must hold.
    Picture rendered(TestFrame& source);

private:
    FilterEntryProc entry_;
};

#endif
