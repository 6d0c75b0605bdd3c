// SPDX-License-Identifier: MIT
#include "bench/bench.h"

#include <opencv2/imgproc.hpp>

#include <memory>

namespace bench {
namespace {

/// Both frames as matrices over the same memory.
struct Matrices {
    cv::Mat source;
    cv::Mat destination;

    explicit Matrices(const Frames& f)
        : source(f.size.height, f.size.width, CV_8UC4, f.source),
          destination(f.size.height, f.size.width, CV_8UC4, f.destination) {}
};

void addMatrixJob(const std::string& subject, const std::string& who,
                  std::function<void(const cv::Mat&, cv::Mat&)> run) {
    add(subject, "OpenCV " + who, [run](Frames& f) -> std::function<void()> {
        const auto matrices = std::make_shared<Matrices>(f);
        return [matrices, run] { run(matrices->source, matrices->destination); };
    });
}

void grayMatte(const cv::Mat& source, cv::Mat& destination, const cv::Mat& table) {
    static cv::Mat gray;
    static cv::Mat matte;
    cv::cvtColor(source, gray, cv::COLOR_BGRA2GRAY);
    cv::LUT(gray, table, matte);
    cv::cvtColor(matte, destination, cv::COLOR_GRAY2BGRA);
}

void colorPass(const cv::Mat& source, cv::Mat& destination) {
    static cv::Mat near;
    static cv::Mat gray;
    cv::inRange(source, cv::Scalar(0, 0, 235, 0), cv::Scalar(20, 20, 255, 255), near);
    cv::cvtColor(source, gray, cv::COLOR_BGRA2GRAY);
    cv::cvtColor(gray, destination, cv::COLOR_GRAY2BGRA);
    source.copyTo(destination, near);
}

void replicate(const cv::Mat& source, cv::Mat& destination) {
    const cv::Size cell(source.cols / 2, source.rows / 2);
    cv::Mat first = destination(cv::Rect(cv::Point(0, 0), cell));
    cv::resize(source, first, cell, 0, 0, cv::INTER_AREA);
    for (const cv::Point corner :
         {cv::Point(cell.width, 0), cv::Point(0, cell.height), cv::Point(cell.width, cell.height)}) {
        first.copyTo(destination(cv::Rect(corner, cell)));
    }
}

}  // namespace

void addOpenCv() {
    cv::setNumThreads(1);
    cv::Mat table(1, 256, CV_8U);
    for (int i = 0; i < 256; ++i) table.at<std::uint8_t>(i) = static_cast<std::uint8_t>(255 - i);

    addMatrixJob("Levels, gamma 1.5", "LUT", [table](const cv::Mat& s, cv::Mat& d) { cv::LUT(s, table, d); });
    addMatrixJob("Extract", "grey, LUT, merge",
                 [table](const cv::Mat& s, cv::Mat& d) { grayMatte(s, d, table); });
    addMatrixJob("Color Pass", "inRange, grey, masked copy", colorPass);
    addMatrixJob("Black & White", "cvtColor both ways", [](const cv::Mat& s, cv::Mat& d) {
        static cv::Mat gray;
        cv::cvtColor(s, gray, cv::COLOR_BGRA2GRAY);
        cv::cvtColor(gray, d, cv::COLOR_GRAY2BGRA);
    });
    addMatrixJob("Vertical Flip", "flip", [](const cv::Mat& s, cv::Mat& d) { cv::flip(s, d, 0); });
    addMatrixJob("Horizontal Flip", "flip", [](const cv::Mat& s, cv::Mat& d) { cv::flip(s, d, 1); });
    addMatrixJob("Replicate, 2", "area resize, copies", replicate);
    addMatrixJob("Antialias", "blur 3 x 3", [](const cv::Mat& s, cv::Mat& d) {
        cv::blur(s, d, cv::Size(3, 3), cv::Point(-1, -1), cv::BORDER_REPLICATE);
    });
    addMatrixJob("Convolution Kernel", "filter2D, nine taps", [](const cv::Mat& s, cv::Mat& d) {
        const cv::Mat kernel =
            (cv::Mat_<float>(3, 3) << 0.01F, 0.16F, 0.01F, 0.16F, 0.33F, 0.16F, 0.01F, 0.16F, 0.01F);
        cv::filter2D(s, d, -1, kernel, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE);
    });
    for (const int percent : {25, 100}) {
        addMatrixJob("Camera Blur, " + std::to_string(percent) + " %", "GaussianBlur",
                     [percent](const cv::Mat& s, cv::Mat& d) {
                         const int rx = percent * s.cols / 1000;
                         const int ry = percent * s.rows / 1000;
                         cv::GaussianBlur(s, d, cv::Size(2 * rx + 1, 2 * ry + 1), rx / 3.0, ry / 3.0,
                                          cv::BORDER_REPLICATE);
                     });
    }
    add("Alpha Glow, 25", "OpenCV dilate of the mask, 24 rings", [](Frames& f) -> std::function<void()> {
        const auto matrices = std::make_shared<Matrices>(f);
        const auto mask = std::make_shared<cv::Mat>();
        cv::extractChannel(matrices->source, *mask, 3);
        const cv::Mat cross = cv::getStructuringElement(cv::MORPH_CROSS, cv::Size(3, 3));
        return [mask, cross] {
            static cv::Mat grown;
            cv::dilate(*mask, grown, cross, cv::Point(-1, -1), 24);
        };
    });
    const auto maps = [](const Frames& f) {
        auto pair = std::make_shared<std::pair<cv::Mat, cv::Mat>>(
            cv::Mat(f.size.height, f.size.width, CV_32F), cv::Mat(f.size.height, f.size.width, CV_32F));
        for (int y = 0; y < f.size.height; ++y) {
            for (int x = 0; x < f.size.width; ++x) {
                pair->first.at<float>(y, x) = static_cast<float>(x) * 0.95F + 20;
                pair->second.at<float>(y, x) = static_cast<float>(y) * 0.95F + 20;
            }
        }
        return pair;
    };
    for (const char* subject : {"Bend, both axes", "Lens Distortion, all five set"}) {
        add(subject, "OpenCV remap, maps made before", [maps](Frames& f) -> std::function<void()> {
            const auto matrices = std::make_shared<Matrices>(f);
            const auto pair = maps(f);
            return [matrices, pair] {
                cv::remap(matrices->source, matrices->destination, pair->first, pair->second,
                          cv::INTER_LINEAR, cv::BORDER_CONSTANT);
            };
        });
    }
    addMatrixJob("Camera View, turned", "warpPerspective", [](const cv::Mat& s, cv::Mat& d) {
        const cv::Mat matrix = (cv::Mat_<double>(3, 3) << 0.9, 0.1, 20, -0.1, 0.9, 60, 0.00002, 0.00003, 1);
        cv::warpPerspective(s, d, matrix, s.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    });
}

}  // namespace bench
