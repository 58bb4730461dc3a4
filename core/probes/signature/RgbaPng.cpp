#include "core/probes/signature/RgbaPng.h"

#include <png.h>
#include <zlib.h>

#include <csetjmp>
#include <cstdint>
#include <exception>

namespace velmo::RgbaPng {

namespace {

constexpr std::size_t bytesPerPixel = 4;
constexpr int bitsPerSample = 8;

void appendTo(png_structp png, png_bytep data, std::size_t length) {
    auto* const file = static_cast<Bytes*>(png_get_io_ptr(png));
    bool appended = true;
    try {
        file->insert(file->end(), data, data + length);
    } catch (const std::exception&) {
        appended = false;
    }
    // Called outside the handler, because png_error leaves by longjmp, which must not skip the
    // handler's end.
    if (!appended)
        png_error(png, "");
}

void flushNothing(png_structp /*png*/) {
}

[[noreturn]] void fail(png_structp png, png_const_charp /*message*/) {
    png_longjmp(png, 1);
}

void ignore(png_structp /*png*/, png_const_charp /*message*/) {
}

class Encoder {
public:
    Encoder()
        : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignore)),
          info_(png_ != nullptr ? png_create_info_struct(png_) : nullptr) {}

    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    ~Encoder() { png_destroy_write_struct(&png_, &info_); }

    /// Appends the picture to the file and tells whether that succeeded. When the library fails it
    /// jumps (longjmp) to this function, in which no variable may need a destructor. `blank` is a
    /// row of zeros.
    bool write(Bytes& file, std::size_t width, std::size_t height, const Row& row,
               const Bytes& blank) {
        if (info_ == nullptr || setjmp(png_jmpbuf(png_)) != 0)
            return false;
        png_set_write_fn(png_, &file, appendTo, flushNothing);
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height),
                     bitsPerSample, PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_sRGB(png_, info_, PNG_sRGB_INTENT_PERCEPTUAL);
        // Transparency is one long run of zeros, and the "up" filter turns the parts that a row
        // repeats from the row above into such runs. A search for other matches takes most of the
        // time and finds few.
        png_set_compression_strategy(png_, Z_RLE);
        png_set_filter(png_, PNG_FILTER_TYPE_DEFAULT, PNG_FILTER_NONE | PNG_FILTER_UP);
        png_write_info(png_, info_);
        for (std::size_t y = 0; y < height; ++y) {
            const ByteView pixels = row(y);
            const bool isBlank = pixels.empty();
            png_set_filter(png_, PNG_FILTER_TYPE_DEFAULT,
                           isBlank ? PNG_FILTER_NONE : PNG_FILTER_UP);
            png_write_row(png_, isBlank ? blank.data() : pixels.data());
        }
        png_write_end(png_, info_);
        return true;
    }

private:
    png_structp png_;
    png_infop info_;
};

} // namespace

std::optional<Bytes> encode(std::size_t width, std::size_t height, const Row& row) {
    const Bytes blank(width * bytesPerPixel);
    Bytes file;
    if (!Encoder().write(file, width, height, row, blank))
        return std::nullopt;
    return file;
}

} // namespace velmo::RgbaPng
