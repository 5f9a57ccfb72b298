// Pictures compared pixel by pixel.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

Image ReadPng(const std::string& file);
void WritePng(const std::string& file, const Image& image);

// How many pixels differ by more than the drawing of letters may on another machine: by more than
// 32 of 255 in any colour. Pictures of the same are alike in every pixel.
int DifferentPixels(const Image& one, const Image& other);
