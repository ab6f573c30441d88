// files.h - the files kelcc reads and writes: PNG (through libpng), PPM/PGM,
// PFM, YUV4MPEG2 and headerless raw frames.  Outputs go to a temporary file
// beside the target and take its name only when complete.
#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "frame.h"

namespace kelcctool {

enum class Container { png, pnm, pfm, y4m, raw };

const char* containerName(Container c);
std::optional<Container> containerByName(const std::string& name);

// What the command line says of a file: its container and, for raw and y4m
// (and to pick among what an image file holds), a layout.
struct FileInfo {
    std::string path;
    Container container = Container::raw;
    std::optional<Layout> layout;
    bool grayImage = false;  // a .pgm name: PGM rather than PPM
};

// --from/--to and the file name's extension: the name given wins, then the
// extension (.png .ppm .pgm .pnm .pfm .y4m, .yuv for i420, a layout's name).
FileInfo describeFile(const std::string& path, const std::string& forced);

// The y4m header fields kelcc carries from input to output.
struct StreamTags {
    std::string rate = "F25:1";
    std::string aspect = "A1:1";
    std::string interlace = "Ip";
    std::string chroma420 = "C420jpeg";
};

class FrameReader {
public:
    virtual ~FrameReader() = default;
    virtual bool next(Frame& frame) = 0;  // false at the end of the file
    virtual int frameCount() const = 0;   // as far as can be told beforehand
    virtual Layout layout() const = 0;
    StreamTags tags;
};

// Opens an input: raw files need `size` (WxH).
std::unique_ptr<FrameReader> openReader(const FileInfo& file, const std::string& size);

// The layout an output of this file takes for frames of the given layout.
Layout outputLayout(const FileInfo& file, Layout source);
// Whether the container can hold several frames.
bool holdsFrames(Container c);

class FrameWriter {
public:
    virtual ~FrameWriter() = default;
    virtual void write(const Frame& frame) = 0;  // frames of outputLayout()
    virtual void finish() = 0;                   // completes and renames the file
};

std::unique_ptr<FrameWriter> openWriter(const FileInfo& file, Layout layout, const StreamTags& tags);

}  // namespace kelcctool
