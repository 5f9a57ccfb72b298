#include "canvas.h"

#include <Edje.h>
#include <png.h>

#include "virtual-tv/model/error.h"

namespace window {

namespace {

struct Writer {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    ~Writer() { png_destroy_write_struct(&png, &info); }
};

void Append(png_structp png, png_bytep bytes, png_size_t size) {
    static_cast<std::string*>(png_get_io_ptr(png))
        ->append(reinterpret_cast<const char*>(bytes), size);
}

}  // namespace

Canvas::Canvas(int width, int height, const std::string& theme)
    : width_(width), height_(height), canvas_(ecore_evas_buffer_new(width, height)) {
    if (canvas_ == nullptr) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, "The toolkit (EFL) has no canvas to draw on.");
    }
    ecore_evas_manual_render_set(canvas_, EINA_TRUE);
    stage_ = std::make_unique<Stage>(GetEvas(), theme);
    stage_->Resize(width, height);
    ecore_evas_show(canvas_);
}

Canvas::~Canvas() {
    stage_.reset();
    ecore_evas_free(canvas_);
}

std::string Canvas::Png() {
    // The theme answers signals with signals of its own.
    edje_message_signal_process();
    edje_message_signal_process();
    ecore_evas_manual_render(canvas_);
    const auto* pixels = static_cast<const std::uint32_t*>(ecore_evas_buffer_pixels_get(canvas_));
    std::string file;
    const Writer writer;
    png_set_write_fn(writer.png, &file, Append, nullptr);
    png_set_IHDR(writer.png, writer.info, static_cast<png_uint_32>(width_),
                 static_cast<png_uint_32>(height_), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_filter(writer.png, 0, PNG_FILTER_NONE);
    png_set_compression_level(writer.png, 6);
    png_write_info(writer.png, writer.info);
    std::vector<png_byte> row(static_cast<size_t>(width_) * 3);
    for (int y = 0; y < height_; ++y) {
        for (size_t x = 0; x < static_cast<size_t>(width_); ++x) {
            const std::uint32_t pixel = *pixels++;
            row[3 * x] = static_cast<png_byte>(pixel >> 16);
            row[3 * x + 1] = static_cast<png_byte>(pixel >> 8);
            row[3 * x + 2] = static_cast<png_byte>(pixel);
        }
        png_write_row(writer.png, row.data());
    }
    png_write_end(writer.png, nullptr);
    return file;
}

}  // namespace window
