// frame.h - kelcc's in-memory frame: a layout (the raw-video name of the way
// samples lie in memory), a size and the bytes, planes one after the other
// with no padding, as a headerless file of that layout holds them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <kelcc.h>

namespace kelcctool {

// A failure the tool reports as one line and an exit status: 1 for bad input
// or input/output, 2 for a command line it can't use.
struct Failure : std::runtime_error {
    int status;
    Failure(const std::string& what, int exitStatus = 1) : std::runtime_error(what), status(exitStatus) {}
};
struct UsageFailure : Failure {
    explicit UsageFailure(const std::string& what) : Failure(what, 2) {}
};

enum class Layout : int {
    rgb24, bgr24, rgba, bgra, rgb48, rgbf,
    gray, gray16, grayf,
    i420, yv12, nv12, yuy2, uyvy, yuv422p, yuv411p, yuv444p,
    ycbcr24,  // studio-range Y, Cb, Cr interleaved: a step between RGB and yuv444p
    rgb565, bgr565, bgr555,
    rggb8, bggr8, grbg8, gbrg8, rggb16, bggr16, grbg16, gbrg16,
    count
};
constexpr int layoutCount = static_cast<int>(Layout::count);

struct PlaneShape {
    int xdiv = 1;       // plane columns = width / xdiv
    int ydiv = 1;       // plane rows = height / ydiv
    int bytes = 0;      // bytes of one column of the plane
};

struct LayoutInfo {
    const char* name;
    int planes;
    std::array<PlaneShape, 3> plane;
    int alignX, alignY;  // width and height must be multiples of these
    bool listed;         // named on the command line
    const char* about;
};

const LayoutInfo& layoutInfo(Layout l);
std::optional<Layout> layoutByName(std::string_view name);
inline const char* layoutName(Layout l) { return layoutInfo(l).name; }
bool isBayer(Layout l);

struct Frame {
    Layout layout = Layout::rgb24;
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> data;

    Frame() = default;
    Frame(Layout l, int w, int h);

    static std::size_t bytesFor(Layout l, int w, int h);
    std::size_t planeOffset(int i) const;
    int step(int i) const;           // row stride of plane i in bytes
    int rows(int i) const;

    std::uint8_t* u8(int i = 0) { return data.data() + planeOffset(i); }
    const std::uint8_t* u8(int i = 0) const { return data.data() + planeOffset(i); }
    Kel16u* u16(int i = 0) { return reinterpret_cast<Kel16u*>(u8(i)); }
    const Kel16u* u16(int i = 0) const { return reinterpret_cast<const Kel16u*>(u8(i)); }
    Kel32f* f32(int i = 0) { return reinterpret_cast<Kel32f*>(u8(i)); }
    const Kel32f* f32(int i = 0) const { return reinterpret_cast<const Kel32f*>(u8(i)); }

    std::array<const Kel8u*, 3> cplanes() const { return {u8(0), u8(plane1()), u8(plane2())}; }
    std::array<Kel8u*, 3> planes() { return {u8(0), u8(plane1()), u8(plane2())}; }
    std::array<int, 3> steps() const { return {step(0), step(plane1()), step(plane2())}; }
    KelImageSize size() const { return {width, height}; }

private:
    int plane1() const { return layoutInfo(layout).planes > 1 ? 1 : 0; }
    int plane2() const { return layoutInfo(layout).planes > 2 ? 2 : 0; }
};

// Throws a Failure naming the call when a library status is an error.
void checkStatus(KelResult status, const char* call);

// Global switches set from the command line.
extern bool verbose;
void note(const std::string& line);  // a --verbose line on standard error

}  // namespace kelcctool
