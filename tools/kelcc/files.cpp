// files.cpp - reading and writing PNG, PPM/PGM, PFM, YUV4MPEG2 and raw frames.
#include "files.h"

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <png.h>

namespace kelcctool {

namespace {

std::string errnoText() { return std::strerror(errno); }

std::string lowerExtension(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    const std::size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    std::string ext = path.substr(dot + 1);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

bool isGrayLayout(Layout l) { return l == Layout::gray || l == Layout::gray16 || l == Layout::grayf; }
bool isFloat(Layout l) { return l == Layout::rgbf || l == Layout::grayf; }
bool isWide(Layout l)
{
    return l == Layout::rgb48 || l == Layout::gray16 || l == Layout::rgbf || l == Layout::grayf ||
           (isBayer(l) && layoutInfo(l).plane[0].bytes == 2);
}

// ---- the output file: a temporary name beside the target, renamed at the end

// The temporary file being written, removed if the process is interrupted.
char pendingTemp[4096];

void removePendingAndExit(int sig)
{
    if (pendingTemp[0]) unlink(pendingTemp);
    std::signal(sig, SIG_DFL);
    std::raise(sig);
}

class OutputFile {
public:
    explicit OutputFile(const std::string& path) : path_(path)
    {
        std::string pattern = path + ".tmp.XXXXXX";
        std::vector<char> name(pattern.begin(), pattern.end());
        name.push_back('\0');
        const int fd = mkstemp(name.data());
        if (fd < 0) throw Failure("cannot write " + path + ": " + errnoText());
        temp_ = name.data();
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(fd, 0666 & ~mask);
        file_ = fdopen(fd, "wb");
        if (!file_) {
            close(fd);
            unlink(temp_.c_str());
            throw Failure("cannot write " + path + ": " + errnoText());
        }
        if (temp_.size() < sizeof pendingTemp) {
            std::memcpy(pendingTemp, temp_.c_str(), temp_.size() + 1);
            std::signal(SIGINT, removePendingAndExit);
            std::signal(SIGTERM, removePendingAndExit);
            std::signal(SIGHUP, removePendingAndExit);
            std::signal(SIGPIPE, removePendingAndExit);
        }
    }
    ~OutputFile()
    {
        if (done_) return;
        if (file_) std::fclose(file_);
        unlink(temp_.c_str());
        pendingTemp[0] = '\0';
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    FILE* get() { return file_; }
    void put(const void* bytes, std::size_t n)
    {
        if (n && std::fwrite(bytes, 1, n, file_) != n) throw Failure("cannot write " + path_ + ": " + errnoText());
    }
    void put(const std::string& s) { put(s.data(), s.size()); }
    void commit()
    {
        const bool bad = std::fflush(file_) != 0 || std::ferror(file_);
        const int saved = errno;
        const bool closeFailed = std::fclose(file_) != 0;
        file_ = nullptr;
        if (bad || closeFailed) {
            errno = bad ? saved : errno;
            throw Failure("cannot write " + path_ + ": " + errnoText());
        }
        if (std::rename(temp_.c_str(), path_.c_str()) != 0) throw Failure("cannot write " + path_ + ": " + errnoText());
        done_ = true;
        pendingTemp[0] = '\0';
    }
    const std::string& path() const { return path_; }

private:
    std::string path_, temp_;
    FILE* file_ = nullptr;
    bool done_ = false;
};

class InputFile {
public:
    explicit InputFile(const std::string& path) : path_(path)
    {
        file_ = std::fopen(path.c_str(), "rb");
        if (!file_) throw Failure("cannot read " + path + ": " + errnoText());
        struct stat st;
        if (fstat(fileno(file_), &st) == 0) {
            if (S_ISDIR(st.st_mode)) {
                std::fclose(file_);
                throw Failure("cannot read " + path + ": Is a directory");
            }
            if (S_ISREG(st.st_mode)) size_ = static_cast<long long>(st.st_size);
        }
    }
    ~InputFile() { std::fclose(file_); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    FILE* get() { return file_; }
    long long size() const { return size_; }  // -1 when not a regular file
    const std::string& path() const { return path_; }
    // Reads exactly n bytes; false at a clean end of file before the first byte.
    bool read(void* bytes, std::size_t n, const std::string& what)
    {
        const std::size_t got = std::fread(bytes, 1, n, file_);
        if (got == n) return true;
        if (std::ferror(file_)) throw Failure("cannot read " + path_ + ": " + errnoText());
        if (got == 0) return false;
        throw Failure(path_ + ": " + what + " is cut short (" + std::to_string(got) + " of " + std::to_string(n) + " bytes)");
    }

private:
    std::string path_;
    FILE* file_;
    long long size_ = -1;
};

void checkDimensions(long long w, long long h, const std::string& where)
{
    if (w < 1 || h < 1 || w > 65536 || h > 65536 || w * h > (1LL << 28))
        throw Failure(where + ": size " + std::to_string(w) + "x" + std::to_string(h) + " is out of range");
}

void checkFits(Layout l, int w, int h, const std::string& where)
{
    const LayoutInfo& li = layoutInfo(l);
    if (w % li.alignX || h % li.alignY)
        throw Failure(where + ": " + li.name + " holds whole " + std::to_string(li.alignX) + "x" + std::to_string(li.alignY) +
                      " cells, and " + std::to_string(w) + "x" + std::to_string(h) + " is not made of them");
    if (isBayer(l) && (w < 2 || h < 2)) throw Failure(where + ": a Bayer mosaic is 2x2 pixels at least");
}

// ---- PNG -------------------------------------------------------------------

struct PngMessage {
    char text[200];
};

void pngFailed(png_structp png, png_const_charp message)
{
    auto* m = static_cast<PngMessage*>(png_get_error_ptr(png));
    std::snprintf(m->text, sizeof m->text, "%s", message);
    longjmp(png_jmpbuf(png), 1);
}
void pngWarned(png_structp, png_const_charp) {}

// Reads a PNG into `out`; returns null, or libpng's message.  Nothing in here
// owns memory across the jump but the frame, which belongs to the caller.
const char* decodePng(FILE* file, Frame& out, PngMessage& message, std::vector<png_bytep>& rows)
{
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, pngFailed, pngWarned);
    if (!png) return "out of memory";
    png_infop info = png_create_info_struct(png);
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_read_struct(&png, &info, nullptr);
        return message.text;
    }
    png_init_io(png, file);
    png_set_sig_bytes(png, 8);
    png_read_info(png, info);
    const png_uint_32 w = png_get_image_width(png, info), h = png_get_image_height(png, info);
    const int depth = png_get_bit_depth(png, info);
    const int type = png_get_color_type(png, info);
    if (type == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
    if (type == PNG_COLOR_TYPE_GRAY && depth < 8) png_set_expand_gray_1_2_4_to_8(png);
    const bool gray = !(type & PNG_COLOR_MASK_COLOR);
    if (png_get_valid(png, info, PNG_INFO_tRNS)) {
        if (gray || depth == 16) png_set_strip_alpha(png);  // transparency of gray or 16-bit images is not kept
        else png_set_tRNS_to_alpha(png);
    }
    if ((type & PNG_COLOR_MASK_ALPHA) && (gray || depth == 16)) png_set_strip_alpha(png);
    if (depth == 16) png_set_swap(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    const int channels = png_get_channels(png, info);
    const bool wide = png_get_bit_depth(png, info) == 16;
    if (w < 1 || h < 1 || w > 65536 || h > 65536 || static_cast<unsigned long long>(w) * h > (1ULL << 28)) {
        std::snprintf(message.text, sizeof message.text, "size %ux%u is out of range", static_cast<unsigned>(w), static_cast<unsigned>(h));
        png_destroy_read_struct(&png, &info, nullptr);
        return message.text;
    }
    Layout layout = channels == 1 ? (wide ? Layout::gray16 : Layout::gray)
                  : channels == 3 ? (wide ? Layout::rgb48 : Layout::rgb24)
                                  : Layout::rgba;
    out = Frame(layout, static_cast<int>(w), static_cast<int>(h));
    rows.resize(h);
    for (png_uint_32 y = 0; y < h; ++y) rows[y] = out.u8() + static_cast<std::size_t>(y) * out.step(0);
    png_read_image(png, rows.data());
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    return nullptr;
}

const char* encodePng(FILE* file, const Frame& frame, PngMessage& message, std::vector<png_bytep>& rows)
{
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &message, pngFailed, pngWarned);
    if (!png) return "out of memory";
    png_infop info = png_create_info_struct(png);
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return message.text;
    }
    png_init_io(png, file);
    int type = PNG_COLOR_TYPE_RGB, depth = 8;
    switch (frame.layout) {
    case Layout::gray: type = PNG_COLOR_TYPE_GRAY; break;
    case Layout::gray16: type = PNG_COLOR_TYPE_GRAY; depth = 16; break;
    case Layout::rgba: type = PNG_COLOR_TYPE_RGB_ALPHA; break;
    case Layout::rgb48: depth = 16; break;
    default: break;
    }
    png_set_IHDR(png, info, static_cast<png_uint_32>(frame.width), static_cast<png_uint_32>(frame.height), depth, type,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    if (depth == 16) png_set_swap(png);
    rows.resize(static_cast<std::size_t>(frame.height));
    for (int y = 0; y < frame.height; ++y)
        rows[static_cast<std::size_t>(y)] = const_cast<png_bytep>(frame.u8()) + static_cast<std::size_t>(y) * frame.step(0);
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return nullptr;
}

// ---- PPM/PGM and PFM headers -------------------------------------------------

// The next whitespace-separated token of a netpbm header, comments skipped.
std::string headerToken(FILE* f)
{
    std::string token;
    int c = std::fgetc(f);
    for (;;) {
        while (c != EOF && std::isspace(c)) c = std::fgetc(f);
        if (c != '#') break;
        while (c != EOF && c != '\n') c = std::fgetc(f);
    }
    while (c != EOF && !std::isspace(c) && token.size() < 32) {
        token += static_cast<char>(c);
        c = std::fgetc(f);
    }
    return token;  // the one whitespace byte after it is consumed
}

long long headerNumber(FILE* f, const std::string& path)
{
    const std::string t = headerToken(f);
    if (t.empty() || t.find_first_not_of("0123456789") != std::string::npos)
        throw Failure(path + ": bad header (expected a number, found '" + t + "')");
    return std::stoll(t);
}

// ---- readers -------------------------------------------------------------------

class ImageReader : public FrameReader {
public:
    explicit ImageReader(Frame frame) : frame_(std::move(frame)) {}
    bool next(Frame& frame) override
    {
        if (used_) return false;
        used_ = true;
        frame = std::move(frame_);
        return true;
    }
    int frameCount() const override { return 1; }
    Layout layout() const override { return frame_.layout; }

private:
    Frame frame_;
    bool used_ = false;
};

Frame readPng(InputFile& in)
{
    unsigned char signature[8];
    if (std::fread(signature, 1, 8, in.get()) != 8 || png_sig_cmp(signature, 0, 8) != 0)
        throw Failure(in.path() + ": not a PNG file");
    Frame frame;
    PngMessage message{};
    std::vector<png_bytep> rows;
    if (const char* failed = decodePng(in.get(), frame, message, rows))
        throw Failure(in.path() + ": PNG decoding failed: " + failed);
    return frame;
}

Frame readPnm(InputFile& in)
{
    FILE* f = in.get();
    const std::string magic = headerToken(f);
    if (magic != "P5" && magic != "P6")
        throw Failure(in.path() + ": not a binary PPM or PGM file (P6 or P5)");
    const long long w = headerNumber(f, in.path()), h = headerNumber(f, in.path()), maxval = headerNumber(f, in.path());
    checkDimensions(w, h, in.path());
    if (maxval != 255 && maxval != 65535)
        throw Failure(in.path() + ": maximum value " + std::to_string(maxval) + " is not supported (255 or 65535)");
    const bool wide = maxval == 65535;
    const Layout layout = magic == "P5" ? (wide ? Layout::gray16 : Layout::gray) : (wide ? Layout::rgb48 : Layout::rgb24);
    Frame frame(layout, static_cast<int>(w), static_cast<int>(h));
    if (!in.read(frame.data.data(), frame.data.size(), "the image data"))
        throw Failure(in.path() + ": the image data is missing");
    if (wide)
        for (std::size_t i = 0; i + 1 < frame.data.size(); i += 2) std::swap(frame.data[i], frame.data[i + 1]);
    return frame;
}

Frame readPfm(InputFile& in)
{
    FILE* f = in.get();
    const std::string magic = headerToken(f);
    if (magic != "PF" && magic != "Pf") throw Failure(in.path() + ": not a PFM file (PF or Pf)");
    const long long w = headerNumber(f, in.path()), h = headerNumber(f, in.path());
    const std::string scaleText = headerToken(f);
    char* end = nullptr;
    const double scale = std::strtod(scaleText.c_str(), &end);
    if (scaleText.empty() || *end || scale == 0.0) throw Failure(in.path() + ": bad PFM scale '" + scaleText + "'");
    checkDimensions(w, h, in.path());
    Frame frame(magic == "PF" ? Layout::rgbf : Layout::grayf, static_cast<int>(w), static_cast<int>(h));
    const std::size_t row = static_cast<std::size_t>(frame.step(0));
    for (int y = frame.height - 1; y >= 0; --y)  // bottom row first
        if (!in.read(frame.u8() + row * static_cast<std::size_t>(y), row, "the image data"))
            throw Failure(in.path() + ": the image data is cut short");
    if (scale > 0)  // big-endian samples
        for (std::size_t i = 0; i + 3 < frame.data.size(); i += 4) {
            std::swap(frame.data[i], frame.data[i + 3]);
            std::swap(frame.data[i + 1], frame.data[i + 2]);
        }
    return frame;
}

class RawReader : public FrameReader {
public:
    RawReader(const std::string& path, Layout layout, int w, int h) : in_(path), layout_(layout), w_(w), h_(h)
    {
        checkFits(layout, w, h, "--size");
        const long long bytes = static_cast<long long>(Frame::bytesFor(layout, w, h));
        if (in_.size() >= 0) {
            if (in_.size() == 0 || in_.size() % bytes != 0)
                throw Failure(path + " is " + std::to_string(in_.size()) + " bytes, not a whole number of " +
                              std::to_string(w) + "x" + std::to_string(h) + " " + layoutName(layout) + " frames (" +
                              std::to_string(bytes) + " bytes each)");
            count_ = static_cast<int>(in_.size() / bytes);
        }
    }
    bool next(Frame& frame) override
    {
        frame = Frame(layout_, w_, h_);
        return in_.read(frame.data.data(), frame.data.size(), "frame " + std::to_string(++index_));
    }
    int frameCount() const override { return count_; }
    Layout layout() const override { return layout_; }

private:
    InputFile in_;
    Layout layout_;
    int w_, h_;
    int count_ = -1;
    int index_ = 0;
};

class Y4mReader : public FrameReader {
public:
    explicit Y4mReader(const std::string& path) : in_(path)
    {
        std::string header;
        int c;
        while ((c = std::fgetc(in_.get())) != EOF && c != '\n' && header.size() < 4096) header += static_cast<char>(c);
        if (header.rfind("YUV4MPEG2", 0) != 0) throw Failure(path + ": not a YUV4MPEG2 file");
        if (c != '\n') throw Failure(path + ": the YUV4MPEG2 header is cut short");
        headerBytes_ = static_cast<long long>(header.size()) + 1;
        std::istringstream fields(header.substr(9));
        std::string field, chroma = "420jpeg";
        long long w = 0, h = 0;
        while (fields >> field) {
            const std::string value = field.substr(1);
            switch (field[0]) {
            case 'W': w = std::atoll(value.c_str()); break;
            case 'H': h = std::atoll(value.c_str()); break;
            case 'F': tags.rate = field; break;
            case 'A': tags.aspect = field; break;
            case 'I': tags.interlace = field; break;
            case 'C': chroma = value; break;
            default: break;  // X and unknown fields
            }
        }
        checkDimensions(w, h, path);
        if (chroma == "420jpeg" || chroma == "420paldv" || chroma == "420mpeg2" || chroma == "420") {
            layout_ = Layout::i420;
            tags.chroma420 = "C" + chroma;
        } else if (chroma == "422") layout_ = Layout::yuv422p;
        else if (chroma == "444") layout_ = Layout::yuv444p;
        else if (chroma == "411") layout_ = Layout::yuv411p;
        else if (chroma == "mono") layout_ = Layout::gray;
        else throw Failure(path + ": YUV4MPEG2 colour space C" + chroma + " is not supported");
        w_ = static_cast<int>(w);
        h_ = static_cast<int>(h);
        checkFits(layout_, w_, h_, path);
        const long long bytes = static_cast<long long>(Frame::bytesFor(layout_, w_, h_));
        if (in_.size() >= 0) count_ = static_cast<int>((in_.size() - headerBytes_) / (bytes + 6));
    }
    bool next(Frame& frame) override
    {
        std::string marker;
        int c;
        while ((c = std::fgetc(in_.get())) != EOF && c != '\n' && marker.size() < 4096) marker += static_cast<char>(c);
        if (c == EOF && marker.empty()) return false;
        ++index_;
        if (marker.rfind("FRAME", 0) != 0 || c != '\n')
            throw Failure(in_.path() + ": frame " + std::to_string(index_) + " has no FRAME header");
        frame = Frame(layout_, w_, h_);
        if (!in_.read(frame.data.data(), frame.data.size(), "frame " + std::to_string(index_)))
            throw Failure(in_.path() + ": frame " + std::to_string(index_) + " is cut short (0 bytes)");
        return true;
    }
    int frameCount() const override { return count_; }
    Layout layout() const override { return layout_; }

private:
    InputFile in_;
    Layout layout_ = Layout::i420;
    int w_ = 0, h_ = 0;
    long long headerBytes_ = 0;
    int count_ = -1;
    int index_ = 0;
};

// ---- writers -----------------------------------------------------------------

class ImageWriter : public FrameWriter {
public:
    ImageWriter(const FileInfo& file) : out_(file.path), container_(file.container), gray_(file.grayImage) {}
    void write(const Frame& frame) override
    {
        if (has_)
            throw Failure(std::string("a ") + containerName(container_) +
                          " file holds one frame and the input has more: pick one with --frame N, or write y4m or raw");
        frame_ = frame;
        has_ = true;
    }
    void finish() override
    {
        if (!has_) throw Failure("the input has no frames");
        switch (container_) {
        case Container::png: {
            PngMessage message{};
            std::vector<png_bytep> rows;
            if (const char* failed = encodePng(out_.get(), frame_, message, rows))
                throw Failure("cannot write " + out_.path() + ": " + failed);
            break;
        }
        case Container::pnm: {
            const bool wide = frame_.layout == Layout::gray16 || frame_.layout == Layout::rgb48;
            const bool gray = frame_.layout == Layout::gray || frame_.layout == Layout::gray16;
            out_.put(std::string(gray ? "P5\n" : "P6\n") + std::to_string(frame_.width) + " " + std::to_string(frame_.height) +
                     "\n" + (wide ? "65535" : "255") + "\n");
            if (wide) {
                std::vector<std::uint8_t> swapped(frame_.data);
                for (std::size_t i = 0; i + 1 < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
                out_.put(swapped.data(), swapped.size());
            } else {
                out_.put(frame_.data.data(), frame_.data.size());
            }
            break;
        }
        case Container::pfm: {
            out_.put(std::string(frame_.layout == Layout::grayf ? "Pf\n" : "PF\n") + std::to_string(frame_.width) + " " +
                     std::to_string(frame_.height) + "\n-1.0\n");
            const std::size_t row = static_cast<std::size_t>(frame_.step(0));
            for (int y = frame_.height - 1; y >= 0; --y) out_.put(frame_.u8() + row * static_cast<std::size_t>(y), row);
            break;
        }
        default: break;
        }
        (void)gray_;
        out_.commit();
    }

private:
    OutputFile out_;
    Container container_;
    bool gray_;
    Frame frame_;
    bool has_ = false;
};

class StreamWriter : public FrameWriter {
public:
    StreamWriter(const FileInfo& file, const StreamTags& tags) : out_(file.path), y4m_(file.container == Container::y4m), tags_(tags) {}
    void write(const Frame& frame) override
    {
        if (y4m_) {
            if (!frames_) {
                std::string chroma;
                switch (frame.layout) {
                case Layout::i420: chroma = tags_.chroma420; break;
                case Layout::yuv422p: chroma = "C422"; break;
                case Layout::yuv444p: chroma = "C444"; break;
                case Layout::yuv411p: chroma = "C411"; break;
                default: chroma = "Cmono"; break;
                }
                out_.put("YUV4MPEG2 W" + std::to_string(frame.width) + " H" + std::to_string(frame.height) + " " + tags_.rate +
                         " " + tags_.interlace + " " + tags_.aspect + " " + chroma + "\n");
            }
            out_.put("FRAME\n");
        }
        out_.put(frame.data.data(), frame.data.size());
        ++frames_;
    }
    void finish() override
    {
        if (!frames_) throw Failure("the input has no frames");
        out_.commit();
    }

private:
    OutputFile out_;
    bool y4m_;
    StreamTags tags_;
    int frames_ = 0;
};

bool holds(Container c, Layout l)
{
    switch (c) {
    case Container::png: return l == Layout::gray || l == Layout::gray16 || l == Layout::rgb24 || l == Layout::rgba || l == Layout::rgb48;
    case Container::pnm: return l == Layout::gray || l == Layout::gray16 || l == Layout::rgb24 || l == Layout::rgb48;
    case Container::pfm: return l == Layout::rgbf || l == Layout::grayf;
    case Container::y4m:
        return l == Layout::i420 || l == Layout::yuv422p || l == Layout::yuv444p || l == Layout::yuv411p || l == Layout::gray;
    case Container::raw: return layoutInfo(l).listed;
    }
    return false;
}

}  // namespace

const char* containerName(Container c)
{
    switch (c) {
    case Container::png: return "png";
    case Container::pnm: return "ppm";
    case Container::pfm: return "pfm";
    case Container::y4m: return "y4m";
    case Container::raw: return "raw";
    }
    return "?";
}

std::optional<Container> containerByName(const std::string& name)
{
    if (name == "png") return Container::png;
    if (name == "ppm" || name == "pgm" || name == "pnm") return Container::pnm;
    if (name == "pfm") return Container::pfm;
    if (name == "y4m") return Container::y4m;
    if (name == "raw") return Container::raw;
    return std::nullopt;
}

FileInfo describeFile(const std::string& path, const std::string& forced)
{
    FileInfo file;
    file.path = path;
    const std::string ext = lowerExtension(path);
    auto fromExtension = [&]() -> std::optional<Container> {
        if (ext == "yuv") return Container::raw;
        return containerByName(ext == "raw" ? "" : ext);
    };
    if (!forced.empty()) {
        if (auto c = containerByName(forced)) {
            file.container = *c;
            file.grayImage = forced == "pgm";
            return file;
        }
        const auto l = layoutByName(forced);
        if (!l) throw UsageFailure("unknown format '" + forced + "' (see kelcc help formats)");
        file.layout = *l;
        const auto c = fromExtension();
        file.container = c ? *c : Container::raw;
        if (file.container != Container::raw && !holds(file.container, *l))
            throw UsageFailure(std::string("a ") + containerName(file.container) + " file can't hold " + forced);
        return file;
    }
    if (const auto c = fromExtension()) {
        file.container = *c;
        file.grayImage = ext == "pgm";
        if (ext == "yuv") file.layout = Layout::i420;
        return file;
    }
    if (const auto l = layoutByName(ext)) {
        file.container = Container::raw;
        file.layout = *l;
        return file;
    }
    throw UsageFailure("unknown format of " + path + " (name it with --from or --to; see kelcc help formats)");
}

bool holdsFrames(Container c) { return c == Container::y4m || c == Container::raw; }

Layout outputLayout(const FileInfo& file, Layout source)
{
    if (file.layout) {
        if (file.container != Container::raw && !holds(file.container, *file.layout))
            throw UsageFailure(std::string("a ") + containerName(file.container) + " file can't hold " + layoutName(*file.layout));
        return *file.layout;
    }
    const bool wide = isWide(source) && !isFloat(source);  // float narrows to 256 levels: 8 bits hold them
    const bool gray = isGrayLayout(source);
    switch (file.container) {
    case Container::png:
        if (holds(Container::png, source)) return source;
        if (source == Layout::bgra) return Layout::rgba;
        if (gray) return wide ? Layout::gray16 : Layout::gray;
        return wide ? Layout::rgb48 : Layout::rgb24;
    case Container::pnm:
        if (file.grayImage || (gray && lowerExtension(file.path) != "ppm")) return wide ? Layout::gray16 : Layout::gray;
        return wide ? Layout::rgb48 : Layout::rgb24;
    case Container::pfm: return gray ? Layout::grayf : Layout::rgbf;
    case Container::y4m:
        if (holds(Container::y4m, source)) return source;
        if (source == Layout::yuy2 || source == Layout::uyvy) return Layout::yuv422p;
        return Layout::i420;
    case Container::raw: break;
    }
    throw UsageFailure("can't tell the layout of " + file.path + ": name one with --to (see kelcc help formats)");
}

std::unique_ptr<FrameReader> openReader(const FileInfo& file, const std::string& size)
{
    switch (file.container) {
    case Container::png: {
        InputFile in(file.path);
        return std::make_unique<ImageReader>(readPng(in));
    }
    case Container::pnm: {
        InputFile in(file.path);
        return std::make_unique<ImageReader>(readPnm(in));
    }
    case Container::pfm: {
        InputFile in(file.path);
        return std::make_unique<ImageReader>(readPfm(in));
    }
    case Container::y4m: return std::make_unique<Y4mReader>(file.path);
    case Container::raw: break;
    }
    if (!file.layout) throw UsageFailure("can't tell the layout of " + file.path + ": name one with --from (see kelcc help formats)");
    if (size.empty()) throw UsageFailure(std::string("a raw ") + layoutName(*file.layout) + " input needs --size WxH");
    int w = 0, h = 0;
    char extra = 0;
    if (std::sscanf(size.c_str(), "%dx%d%c", &w, &h, &extra) != 2 || w < 1 || h < 1)
        throw UsageFailure("--size wants WxH, e.g. 640x480, not '" + size + "'");
    checkDimensions(w, h, "--size");
    return std::make_unique<RawReader>(file.path, *file.layout, w, h);
}

std::unique_ptr<FrameWriter> openWriter(const FileInfo& file, Layout layout, const StreamTags& tags)
{
    (void)layout;
    if (holdsFrames(file.container)) return std::make_unique<StreamWriter>(file, tags);
    return std::make_unique<ImageWriter>(file);
}

}  // namespace kelcctool
