// SPDX-License-Identifier: MIT
// The parts of reading and writing that need no clip: names, numbers, orientations, files.
#include "app/base/output_file.h"
#include "app/media/exif.h"
#include "app/media/picture_tools.h"
#include "app/media/render_job.h"
#include "app/media/sequence_pattern.h"
#include "engine/error.h"

#include <gmock/gmock.h>
#include <cstring>
#include <fstream>

namespace vireo {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class FolderTest : public testing::Test {
protected:
    void SetUp() override {
        folder_ =
            fs::temp_directory_path() /
            ("vireo-media-" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(folder_);
        fs::create_directory(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    void write(const fs::path& name, const std::string& text) { std::ofstream(folder_ / name) << text; }
    std::string read(const fs::path& name) const {
        std::ifstream file(folder_ / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : fs::directory_iterator(folder_))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        return all;
    }

    fs::path folder_;
};

using SequencePatternTest = FolderTest;

TEST_F(SequencePatternTest, NamesHaveOneNumberAndOnlyTheirsAreFound) {
    EXPECT_EQ(SequencePattern::parse("a/f%04d.png")->name(7), "f0007.png");
    EXPECT_EQ(SequencePattern::parse("f%d.png")->name(12345), "f12345.png");
    EXPECT_EQ(SequencePattern::parse("100%%-%02d.png")->name(3), "100%-03.png");
    for (const char* name : {"plain.png", "100%.png", "%d-%d.png", "%s.png", "%1234d.png", "%%d.png"})
        EXPECT_FALSE(SequencePattern::parse(name)) << name;
    for (const char* name :
         {"f0003.png", "f0001.png", "f12.png", "f00004.png", "f0005.jpg", "f.png", "fx.png"})
        write(name, "");
    const auto found = [this](const char* name) {
        const std::string path = (folder_ / name).string();
        return SequencePattern::parse(path).value_or(SequencePattern::single(path)).existing();
    };
    EXPECT_THAT(found("f%04d.png"), ElementsAre(1, 3));
    EXPECT_THAT(found("f%d.png"), ElementsAre(12));
    EXPECT_THAT(found("f.png"), ElementsAre(1));
    EXPECT_THAT(found("g.png"), ElementsAre());
}

using OutputFileTest = FolderTest;

TEST_F(OutputFileTest, AppearsWholeOrNotAtAll) {
    write("old", "old");
    const auto writeBoth = [this](bool overwrite, bool commit) {
        OutputFileSet files(folder_);
        std::ofstream(files.add("new")) << "whole";
        std::ofstream(files.add("old")) << "whole";
        if (commit) files.commit(overwrite);
    };
    writeBoth(true, false);
    EXPECT_THROW(writeBoth(false, true), Error);
    EXPECT_THROW(OutputFile(folder_ / "old", false), Error);
    EXPECT_THROW(OutputFile(folder_, true), Error);
    std::ofstream(OutputFile(folder_ / "old", true).path()) << "half";
    EXPECT_THAT(names(), ElementsAre("old"));
    EXPECT_EQ(read("old"), "old");
    OutputFile file(folder_ / "old", true);
    std::ofstream(file.path()) << "replaced";
    file.commit();
    EXPECT_EQ(read("old"), "replaced");
    writeBoth(true, true);
    EXPECT_THAT(names(), ElementsAre("new", "old"));
    EXPECT_EQ(read("old"), "whole");
}

/// Pixels as letters, a row a string.
std::shared_ptr<Picture> lettered(const std::vector<std::string>& rows) {
    auto picture = std::make_shared<Picture>(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()));
    for (int y = 0; y < picture->height(); ++y) {
        for (int x = 0; x < picture->width(); ++x)
            std::memset(picture->row(y) + 4 * x,
                        rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)], 4);
    }
    return picture;
}

std::vector<std::string> letters(const Picture& picture) {
    std::vector<std::string> rows;
    for (int y = 0; y < picture.height(); ++y) {
        rows.emplace_back();
        for (int x = 0; x < picture.width(); ++x) rows.back() += static_cast<char>(picture.row(y)[4 * x]);
    }
    return rows;
}

TEST(Orientation, EveryTagBringsItsPictureUpright) {
    // How "abc / def" is stored under each tag.
    const std::vector<std::string> stored[] = {{"abc", "def"},     {"cba", "fed"},     {"fed", "cba"},
                                               {"def", "abc"},     {"ad", "be", "cf"}, {"cf", "be", "ad"},
                                               {"fc", "eb", "da"}, {"da", "eb", "fc"}};
    for (int tag = 1; tag <= 8; ++tag) {
        const auto upright = oriented(*lettered(stored[tag - 1]), exifOrientation(tag));
        EXPECT_THAT(letters(*upright), ElementsAre("abc", "def")) << tag;
    }
    EXPECT_TRUE(exifOrientation(0).upright());
    EXPECT_TRUE(exifOrientation(9).upright());
}

TEST(Transparency, IsSeenInEveryPixelAndInNoColour) {
    const auto expectSeen = [](std::uint32_t format, auto full, auto less) {
        using Channel = decltype(full);
        for (int width = 1; width <= 20; ++width) {
            Picture picture(width, 2, format);
            const auto channel = [&picture](int i, int y) -> Channel& {
                return reinterpret_cast<Channel*>(picture.row(y))[i];
            };
            for (int i = 0; i < 8 * width; ++i) {
                channel(i % (4 * width), i / (4 * width)) = i % 4 == 3 ? full : Channel{0};
            }
            EXPECT_FALSE(hasTransparency(picture));
            for (int x = 0; x < width; ++x) {
                channel(4 * x + 3, 1) = less;
                EXPECT_TRUE(hasTransparency(picture)) << x << " of " << width;
                channel(4 * x + 3, 1) = full;
            }
        }
    };
    expectSeen(PixKit::formatBgra, std::uint8_t{0xFF}, std::uint8_t{0x7F});
    expectSeen(formatBgra16, std::uint16_t{0xFFFF}, std::uint16_t{0xFEFF});
    expectSeen(formatBgraFloat, 1.0F, 0.99F);
}

TEST(Exif, BrokenRecordsMeanUpright) {
    // A TIFF head, one entry: the orientation 6.
    const std::string tiff("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0", 26);
    const auto tag = [](const std::string& file) {
        return exifOrientationTag({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
    };
    const std::string exif = std::string("Exif\0\0", 6) + tiff;
    const std::string jpeg = std::string("\xFF\xD8\xFF\xE1\0", 5) + static_cast<char>(exif.size() + 2) + exif;
    EXPECT_EQ(tag(tiff), 6);
    EXPECT_EQ(tag(jpeg), 6);
    for (std::size_t length = 0; length < jpeg.size(); ++length)
        EXPECT_THAT(tag(jpeg.substr(0, length)), testing::AnyOf(1, 6, 0));
    std::string wild = tiff;
    wild[4] = wild[5] = wild[6] = wild[7] = '\xFF';
    EXPECT_EQ(tag(wild), 1);
}

}  // namespace
}  // namespace vireo
