#include "png_image.h"

#include <png.h>

#include <cstdlib>
#include <stdexcept>

namespace {

constexpr int kColourThatMayDiffer = 32;

png_image Header() {
    png_image header{};
    header.version = PNG_IMAGE_VERSION;
    return header;
}

}  // namespace

Image ReadPng(const std::string& file) {
    png_image header = Header();
    if (png_image_begin_read_from_file(&header, file.c_str()) == 0) {
        throw std::runtime_error(file + ": " + header.message);
    }
    header.format = PNG_FORMAT_RGB;
    Image image;
    image.width = static_cast<int>(header.width);
    image.height = static_cast<int>(header.height);
    image.rgb.resize(PNG_IMAGE_SIZE(header));
    if (png_image_finish_read(&header, nullptr, image.rgb.data(), 0, nullptr) == 0) {
        throw std::runtime_error(file + ": " + header.message);
    }
    return image;
}

void WritePng(const std::string& file, const Image& image) {
    png_image header = Header();
    header.width = static_cast<png_uint_32>(image.width);
    header.height = static_cast<png_uint_32>(image.height);
    header.format = PNG_FORMAT_RGB;
    if (png_image_write_to_file(&header, file.c_str(), 0, image.rgb.data(), 0, nullptr) == 0) {
        throw std::runtime_error(file + ": " + header.message);
    }
}

int DifferentPixels(const Image& one, const Image& other) {
    if (one.width != other.width || one.height != other.height) {
        return one.width * one.height + other.width * other.height;
    }
    int different = 0;
    for (size_t pixel = 0; pixel < one.rgb.size(); pixel += 3) {
        bool differs = false;
        for (size_t i = pixel; i < pixel + 3; ++i) {
            differs = differs || std::abs(one.rgb[i] - other.rgb[i]) > kColourThatMayDiffer;
        }
        different += differs ? 1 : 0;
    }
    return different;
}
