// The kelcc tool, driven as a user drives it: small files made here, its
// outputs compared byte for byte with the library called directly, round
// trips through y4m, every error path's message and exit status, and no
// partial output after a failure.
#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kelcc.h"
#include "kelcore.h"
#include "support/guarded.h"

extern char** environ;

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Result {
    int status = -1;
    std::string out, err;
};

class Tool : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/kelcc-tool-test.XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
        threads_omp_of_n_kel = 1;
    }
    void TearDown() override
    {
        for (const std::string& name : files()) std::remove(path(name).c_str());
        rmdir(dir_.c_str());
    }

    std::string path(const std::string& name) const { return dir_ + "/" + name; }

    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        if (DIR* d = opendir(dir_.c_str())) {
            while (dirent* e = readdir(d))
                if (std::strcmp(e->d_name, ".") && std::strcmp(e->d_name, "..")) names.push_back(e->d_name);
            closedir(d);
        }
        return names;
    }

    // Runs kelcc with the arguments; names not starting with '-' or '/' and
    // containing a dot are taken as files of the test's folder.
    Result kelcc(std::vector<std::string> args)
    {
        for (std::string& a : args)
            if (a.find('.') != std::string::npos && a[0] != '-' && a[0] != '/' && a.find(',') == std::string::npos) a = path(a);
        std::vector<char*> argv;
        std::string tool = KELCC_TOOL_PATH;
        argv.push_back(tool.data());
        for (std::string& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        const std::string out = path(".stdout"), err = path(".stderr");
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        pid_t pid = 0;
        Result r;
        if (posix_spawn(&pid, tool.c_str(), &actions, nullptr, argv.data(), environ) == 0) {
            int status = 0;
            waitpid(pid, &status, 0);
            r.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        posix_spawn_file_actions_destroy(&actions);
        r.out = text(".stdout");
        r.err = text(".stderr");
        std::remove(out.c_str());
        std::remove(err.c_str());
        return r;
    }

    std::string text(const std::string& name) const
    {
        std::ifstream f(path(name), std::ios::binary);
        std::stringstream s;
        s << f.rdbuf();
        return s.str();
    }
    Bytes bytes(const std::string& name) const
    {
        const std::string t = text(name);
        return Bytes(t.begin(), t.end());
    }
    void write(const std::string& name, const Bytes& data, const std::string& header = "")
    {
        std::ofstream f(path(name), std::ios::binary);
        f << header;
        f.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
    }
    bool exists(const std::string& name) const
    {
        struct stat st;
        return stat(path(name).c_str(), &st) == 0;
    }
    // The folder holds exactly these files: nothing partial or temporary.
    void expectOnly(std::vector<std::string> names) const
    {
        std::vector<std::string> have = files();
        std::sort(have.begin(), have.end());
        std::sort(names.begin(), names.end());
        EXPECT_EQ(have, names);
    }

    std::string dir_;
};

Bytes noise(std::size_t n, unsigned seed)
{
    Bytes b(n);
    unsigned s = seed * 2654435761u + 12345u;
    for (auto& v : b) {
        s = s * 1664525u + 1013904223u;
        v = static_cast<std::uint8_t>(s >> 24);
    }
    return b;
}

// A smooth RGB picture with some detail, width x height.
Bytes picture(int w, int h)
{
    Bytes b(static_cast<std::size_t>(w) * h * 3);
    const Bytes n = noise(b.size(), 7);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const std::size_t i = (static_cast<std::size_t>(y) * w + x) * 3;
            b[i] = static_cast<std::uint8_t>(20 + x * 7 + (n[i] & 15));
            b[i + 1] = static_cast<std::uint8_t>(40 + y * 9 + (n[i + 1] & 15));
            b[i + 2] = static_cast<std::uint8_t>(200 - x * 5 + (n[i + 2] & 15));
        }
    return b;
}

std::string ppmHeader(int w, int h) { return "P6\n" + std::to_string(w) + " " + std::to_string(h) + "\n255\n"; }
Bytes skipHeader(const Bytes& file, std::size_t lines)
{
    std::size_t i = 0;
    for (std::size_t seen = 0; i < file.size() && seen < lines; ++i)
        if (file[i] == '\n') ++seen;
    return Bytes(file.begin() + static_cast<std::ptrdiff_t>(i), file.end());
}

// Guarded destination planes for the library called directly; their rows,
// back to back, are what a raw file of the layout holds.
struct Planes {
    std::vector<std::unique_ptr<kt::GuardedImage>> p;
    std::vector<std::size_t> rowBytes;
    std::vector<int> heights;
    Planes& add(std::size_t bytesPerRow, int rows)
    {
        p.push_back(std::make_unique<kt::GuardedImage>(bytesPerRow, rows));
        p.back()->fill(0);
        rowBytes.push_back(bytesPerRow);
        heights.push_back(rows);
        return *this;
    }
    Kel8u* operator[](std::size_t i) { return p[i]->data(); }
    int step(std::size_t i) const { return p[i]->step(); }
    Bytes tight() const
    {
        Bytes out;
        for (std::size_t i = 0; i < p.size(); ++i)
            for (int y = 0; y < heights[i]; ++y) out.insert(out.end(), p[i]->row(y), p[i]->row(y) + rowBytes[i]);
        return out;
    }
    bool intact() const
    {
        for (const auto& g : p)
            if (!g->fenceIntact()) return false;
        return true;
    }
};

constexpr int W = 16, H = 8;

// ---- conversions against the library ---------------------------------------------

TEST_F(Tool, PpmToI420IsTheLibrarysRgbToYCbCr420)
{
    const Bytes rgb = picture(W, H);
    write("in.ppm", rgb, ppmHeader(W, H));
    const Result r = kelcc({"convert", "in.ppm", "out.i420"});
    ASSERT_EQ(r.status, 0) << r.err;
    Planes d;
    d.add(W, H).add(W / 2, H / 2).add(W / 2, H / 2);
    Kel8u* const planes[3] = {d[0], d[1], d[2]};
    const int steps[3] = {d.step(0), d.step(1), d.step(2)};
    ASSERT_EQ(keliRGBToYCbCr420_8u_C3P3R(rgb.data(), W * 3, planes, steps, {W, H}), kelOk);
    EXPECT_TRUE(d.intact());
    EXPECT_EQ(bytes("out.i420"), d.tight());
}

TEST_F(Tool, Nv12ToYuy2IsOneLibraryCall)
{
    const Bytes nv12 = noise(W * H * 3 / 2, 3);
    write("in.nv12", nv12);
    const Result r = kelcc({"convert", "in.nv12", "out.yuy2", "--size", "16x8", "--verbose"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("keliYCbCr420ToYCbCr422_8u_P2C2R"), std::string::npos) << r.err;
    Planes d;
    d.add(W * 2, H);
    ASSERT_EQ(keliYCbCr420ToYCbCr422_8u_P2C2R(nv12.data(), W, nv12.data() + W * H, W, d[0], d.step(0), {W, H}), kelOk);
    EXPECT_TRUE(d.intact());
    EXPECT_EQ(bytes("out.yuy2"), d.tight());
}

TEST_F(Tool, Nv12ToPpmGoesThroughI420AndSaysSo)
{
    const Bytes nv12 = noise(W * H * 3 / 2, 4);
    write("in.raw", nv12);
    const Result r = kelcc({"convert", "in.raw", "out.ppm", "--from", "nv12", "--size", "16x8", "-v"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("nv12 -> i420 (keliYCbCr420_8u_P2P3R); i420 -> rgb24 (keliYCbCr420ToRGB_8u_P3C3R)"), std::string::npos)
        << r.err;
    Planes mid, d;
    mid.add(W, H).add(W / 2, H / 2).add(W / 2, H / 2);
    Kel8u* const planes[3] = {mid[0], mid[1], mid[2]};
    const int steps[3] = {mid.step(0), mid.step(1), mid.step(2)};
    ASSERT_EQ(keliYCbCr420_8u_P2P3R(nv12.data(), W, nv12.data() + W * H, W, planes, steps, {W, H}), kelOk);
    d.add(W * 3, H);
    const Kel8u* const src[3] = {mid[0], mid[1], mid[2]};
    ASSERT_EQ(keliYCbCr420ToRGB_8u_P3C3R(src, steps, d[0], d.step(0), {W, H}), kelOk);
    EXPECT_TRUE(mid.intact() && d.intact());
    EXPECT_EQ(bytes("out.ppm"), [&] {
        const std::string h = ppmHeader(W, H);
        Bytes b(h.begin(), h.end());
        const Bytes t = d.tight();
        b.insert(b.end(), t.begin(), t.end());
        return b;
    }());
}

TEST_F(Tool, Rgb565IsTheVideoToolsWordOrder)
{
    // rgb565 as video tools name it has red in the top bits: the library's BGR565.
    const Bytes rgb = picture(W, H);
    write("in.ppm", rgb, ppmHeader(W, H));
    ASSERT_EQ(kelcc({"convert", "in.ppm", "out.rgb565"}).status, 0);
    const Bytes out = bytes("out.rgb565");
    ASSERT_EQ(out.size(), static_cast<std::size_t>(W * H * 2));
    for (int i = 0; i < W * H; ++i) {
        const unsigned word = out[2 * i] | (out[2 * i + 1] << 8);
        EXPECT_EQ(word >> 11, rgb[3 * i] >> 3u) << i;
        EXPECT_EQ((word >> 5) & 63, rgb[3 * i + 1] >> 2u) << i;
        EXPECT_EQ(word & 31, rgb[3 * i + 2] >> 3u) << i;
    }
}

TEST_F(Tool, PngKeepsEveryByteAt8And16Bits)
{
    const Bytes rgb = picture(W, H);
    write("in.ppm", rgb, ppmHeader(W, H));
    ASSERT_EQ(kelcc({"convert", "in.ppm", "mid.png"}).status, 0);
    ASSERT_EQ(kelcc({"convert", "mid.png", "back.ppm"}).status, 0);
    EXPECT_EQ(bytes("back.ppm"), bytes("in.ppm"));

    const Bytes wide = noise(W * H * 2, 9);
    write("in16.pgm", wide, "P5\n16 8\n65535\n");
    ASSERT_EQ(kelcc({"convert", "in16.pgm", "mid16.png"}).status, 0);
    ASSERT_EQ(kelcc({"convert", "mid16.png", "back16.pgm"}).status, 0);
    EXPECT_EQ(bytes("back16.pgm"), bytes("in16.pgm"));
}

TEST_F(Tool, PfmRoundTripIsExact)
{
    std::vector<float> f(W * H * 3);
    for (std::size_t i = 0; i < f.size(); ++i) f[i] = static_cast<float>(i) / 397.0f - 0.1f;
    Bytes raw(f.size() * 4);
    std::memcpy(raw.data(), f.data(), raw.size());
    write("in.rgbf", raw);
    ASSERT_EQ(kelcc({"convert", "in.rgbf", "mid.pfm", "--size", "16x8"}).status, 0);
    EXPECT_EQ(text("mid.pfm").rfind("PF\n16 8\n-1.0\n", 0), 0u);
    ASSERT_EQ(kelcc({"convert", "mid.pfm", "back.rgbf"}).status, 0);
    EXPECT_EQ(bytes("back.rgbf"), raw);
}

TEST_F(Tool, DitherIsTheLibrarysReduceBits)
{
    const Bytes rgb = picture(W, H);
    write("in.ppm", rgb, ppmHeader(W, H));
    const Result r = kelcc({"dither", "in.ppm", "out.ppm", "--levels", "4", "--method", "fs", "--noise", "20", "--threads", "1"});
    ASSERT_EQ(r.status, 0) << r.err;
    Planes d;
    d.add(W * 3, H);
    ASSERT_EQ(keliReduceBits_8u_C3R(rgb.data(), W * 3, d[0], d.step(0), {W, H}, 20, kelDitherFloydSteinberg, 4), kelOk);
    EXPECT_TRUE(d.intact());
    EXPECT_EQ(skipHeader(bytes("out.ppm"), 3), d.tight());
}

TEST_F(Tool, LabPlanesAreTheLibrarysAndComeBack)
{
    const Bytes rgb = picture(W, H);
    write("in.ppm", rgb, ppmHeader(W, H));
    ASSERT_EQ(kelcc({"lab", "in.ppm", "lab.ppm"}).status, 0);
    Bytes bgr(rgb.size());
    for (std::size_t i = 0; i < rgb.size(); i += 3) {
        bgr[i] = rgb[i + 2];
        bgr[i + 1] = rgb[i + 1];
        bgr[i + 2] = rgb[i];
    }
    Planes d;
    d.add(W * 3, H);
    ASSERT_EQ(keliBGRToLab_8u_C3R(bgr.data(), W * 3, d[0], d.step(0), {W, H}), kelOk);
    EXPECT_TRUE(d.intact());
    const Bytes lab = d.tight();
    EXPECT_EQ(skipHeader(bytes("lab.ppm"), 3), lab);

    ASSERT_EQ(kelcc({"lab", "--inverse", "lab.ppm", "back.ppm"}).status, 0);
    Planes back;
    back.add(W * 3, H);
    ASSERT_EQ(keliLabToBGR_8u_C3R(lab.data(), W * 3, back[0], back.step(0), {W, H}), kelOk);
    Bytes expected = back.tight();
    for (std::size_t i = 0; i < expected.size(); i += 3) std::swap(expected[i], expected[i + 2]);
    EXPECT_EQ(skipHeader(bytes("back.ppm"), 3), expected);
}

TEST_F(Tool, ReversibleYCoCgComesBackExactly)
{
    write("in.ppm", picture(W, H), ppmHeader(W, H));
    ASSERT_EQ(kelcc({"ycocg", "--rev", "in.ppm", "planes.png"}).status, 0);
    ASSERT_EQ(kelcc({"ycocg", "--rev", "--inverse", "planes.png", "back.ppm"}).status, 0);
    EXPECT_EQ(bytes("back.ppm"), bytes("in.ppm"));
}

TEST_F(Tool, GammaAndTwistAreTheLibrarys)
{
    const Bytes rgb = picture(W, H);
    write("in.ppm", rgb, ppmHeader(W, H));
    ASSERT_EQ(kelcc({"gamma", "in.ppm", "g.ppm"}).status, 0);
    Planes g;
    g.add(W * 3, H);
    ASSERT_EQ(keliGammaFwd_8u_C3R(rgb.data(), W * 3, g[0], g.step(0), {W, H}), kelOk);
    EXPECT_TRUE(g.intact());
    EXPECT_EQ(skipHeader(bytes("g.ppm"), 3), g.tight());

    const float m[12] = {0.5f, 0.25f, 0.25f, 10, 0, 1, 0, 0, 0.1f, 0.2f, 0.7f, -5};
    ASSERT_EQ(kelcc({"twist", "in.ppm", "t.ppm", "--matrix", "0.5,0.25,0.25,10,0,1,0,0,0.1,0.2,0.7,-5"}).status, 0);
    Planes t;
    t.add(W * 3, H);
    ASSERT_EQ(keliColorTwist32f_8u_C3R(rgb.data(), W * 3, t[0], t.step(0), {W, H}, m), kelOk);
    EXPECT_TRUE(t.intact());
    EXPECT_EQ(skipHeader(bytes("t.ppm"), 3), t.tight());
}

TEST_F(Tool, DemosaicIsTheLibrarysCfaToRgb)
{
    const Bytes mosaic = noise(W * H, 5);
    write("in.raw", mosaic);
    ASSERT_EQ(kelcc({"demosaic", "in.raw", "out.ppm", "--pattern", "grbg", "--size", "16x8"}).status, 0);
    Planes d;
    d.add(W * 3, H);
    ASSERT_EQ(keliCFAToRGB_8u_C1C3R(mosaic.data(), {0, 0, W, H}, {W, H}, W, d[0], d.step(0), kelBayerGridGRBG), kelOk);
    EXPECT_TRUE(d.intact());
    EXPECT_EQ(skipHeader(bytes("out.ppm"), 3), d.tight());
}

TEST_F(Tool, CropRoundsDownToWholeCells)
{
    const Bytes rgb = picture(7, 5);
    write("in.ppm", rgb, ppmHeader(7, 5));
    const Result r = kelcc({"convert", "in.ppm", "out.i420", "--crop"});
    ASSERT_EQ(r.status, 0) << r.err;
    Planes d;
    d.add(6, 4).add(3, 2).add(3, 2);
    Kel8u* const planes[3] = {d[0], d[1], d[2]};
    const int steps[3] = {d.step(0), d.step(1), d.step(2)};
    ASSERT_EQ(keliRGBToYCbCr420_8u_C3P3R(rgb.data(), 7 * 3, planes, steps, {6, 4}), kelOk);
    EXPECT_EQ(bytes("out.i420"), d.tight());
}

// ---- y4m ----------------------------------------------------------------------------

TEST_F(Tool, Y4mRoundTripKeepsFramesAndTags)
{
    const std::string header = "YUV4MPEG2 W16 H8 F30000:1001 It A10:11 C420mpeg2\n";
    Bytes file(header.begin(), header.end());
    const std::size_t frameBytes = W * H * 3 / 2;
    Bytes frames;
    for (unsigned k = 0; k < 3; ++k) {
        const Bytes f = noise(frameBytes, 20 + k);
        const std::string mark = "FRAME\n";
        file.insert(file.end(), mark.begin(), mark.end());
        file.insert(file.end(), f.begin(), f.end());
        frames.insert(frames.end(), f.begin(), f.end());
    }
    write("in.y4m", file);
    // i420 to NV12 and back is byte moves only: the frames come back as they were.
    ASSERT_EQ(kelcc({"convert", "in.y4m", "mid.nv12"}).status, 0);
    EXPECT_EQ(bytes("mid.nv12").size(), 3 * frameBytes);
    ASSERT_EQ(kelcc({"convert", "mid.nv12", "raw.y4m", "--size", "16x8"}).status, 0);
    EXPECT_EQ(skipHeader(bytes("raw.y4m"), 1).size(), 3 * (frameBytes + 6));
    ASSERT_EQ(kelcc({"convert", "in.y4m", "same.y4m"}).status, 0);
    EXPECT_EQ(bytes("same.y4m"), file);
    // y4m to y4m at another sampling: 4:2:2 keeps the rate, aspect and interlacing tags.
    ASSERT_EQ(kelcc({"convert", "in.y4m", "out422.y4m", "--to", "yuv422p"}).status, 0);
    EXPECT_EQ(text("out422.y4m").rfind("YUV4MPEG2 W16 H8 F30000:1001 It A10:11 C422\nFRAME\n", 0), 0u);
    ASSERT_EQ(kelcc({"convert", "out422.y4m", "back.y4m", "--to", "i420"}).status, 0);
    EXPECT_EQ(text("back.y4m").rfind("YUV4MPEG2 W16 H8 F30000:1001 It A10:11 C420jpeg\n", 0), 0u);
    EXPECT_EQ(skipHeader(bytes("back.y4m"), 1), skipHeader(file, 1));
    // one frame of several
    ASSERT_EQ(kelcc({"convert", "in.y4m", "two.i420", "--frame", "2"}).status, 0);
    EXPECT_EQ(bytes("two.i420"), Bytes(frames.begin() + frameBytes, frames.begin() + 2 * frameBytes));
}

TEST_F(Tool, PngToY4mAndBackIsTheLibrarysPair)
{
    const Bytes rgb = picture(W, H);
    write("in.ppm", rgb, ppmHeader(W, H));
    ASSERT_EQ(kelcc({"convert", "in.ppm", "a.y4m"}).status, 0);
    ASSERT_EQ(kelcc({"convert", "a.y4m", "b.ppm"}).status, 0);
    Planes yuv, back;
    yuv.add(W, H).add(W / 2, H / 2).add(W / 2, H / 2);
    Kel8u* const planes[3] = {yuv[0], yuv[1], yuv[2]};
    const int steps[3] = {yuv.step(0), yuv.step(1), yuv.step(2)};
    ASSERT_EQ(keliRGBToYCbCr420_8u_C3P3R(rgb.data(), W * 3, planes, steps, {W, H}), kelOk);
    back.add(W * 3, H);
    const Kel8u* const src[3] = {yuv[0], yuv[1], yuv[2]};
    ASSERT_EQ(keliYCbCr420ToRGB_8u_P3C3R(src, steps, back[0], back.step(0), {W, H}), kelOk);
    EXPECT_EQ(skipHeader(bytes("a.y4m"), 2), yuv.tight());
    EXPECT_EQ(skipHeader(bytes("b.ppm"), 3), back.tight());
}

// ---- errors: one line, an exit status, no file left behind -------------------------------

void expectError(const Result& r, int status, const std::string& part)
{
    EXPECT_EQ(r.status, status) << r.err;
    EXPECT_EQ(r.err.rfind("kelcc: ", 0), 0u) << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_NE(r.err.find(part), std::string::npos) << r.err;
}

TEST_F(Tool, UnknownFormatIsAUsageError)
{
    write("in.ppm", picture(4, 4), ppmHeader(4, 4));
    expectError(kelcc({"convert", "in.ppm", "out.xyz"}), 2, "unknown format");
    expectError(kelcc({"convert", "in.ppm", "out.raw", "--to", "yuv999"}), 2, "unknown format 'yuv999'");
    expectError(kelcc({"convert", "in.ppm"}), 2, "IN and OUT");
    expectError(kelcc({"convert", "in.ppm", "o.png", "--levels", "3"}), 2, "unknown option --levels");
    expectError(kelcc({"frobnicate"}), 2, "unknown command");
    expectError(kelcc({"dither", "in.ppm", "o.png"}), 2, "--levels");
    expectError(kelcc({"convert", "in.nv12", "o.png"}), 2, "--size");
    expectOnly({"in.ppm"});
}

TEST_F(Tool, RawFileOfPartFramesIsRefused)
{
    write("in.nv12", noise(W * H * 3 / 2 + 5, 1));
    expectError(kelcc({"convert", "in.nv12", "out.png", "--size", "16x8"}), 1,
                "is 197 bytes, not a whole number of 16x8 nv12 frames (192 bytes each)");
    expectOnly({"in.nv12"});
}

TEST_F(Tool, BadPngIsRefused)
{
    write("junk.png", noise(100, 2));
    expectError(kelcc({"convert", "junk.png", "out.ppm"}), 1, "not a PNG file");
    write("in.ppm", picture(W, H), ppmHeader(W, H));
    ASSERT_EQ(kelcc({"convert", "in.ppm", "good.png"}).status, 0);
    Bytes cut = bytes("good.png");
    cut.resize(cut.size() - 30);
    write("cut.png", cut);
    expectError(kelcc({"convert", "cut.png", "out.ppm"}), 1, "PNG decoding failed");
    expectOnly({"junk.png", "in.ppm", "good.png", "cut.png"});
}

TEST_F(Tool, SizeTheLayoutCannotHoldSaysTheRounding)
{
    write("in.ppm", picture(7, 5), ppmHeader(7, 5));
    expectError(kelcc({"convert", "in.ppm", "out.i420"}), 1, "i420 holds whole 2x2 cells: 7x5 would be rounded to 6x4");
    expectError(kelcc({"convert", "in.ppm", "out.yuv411p"}), 1, "7x5 would be rounded to 4x5");
    expectOnly({"in.ppm"});
}

TEST_F(Tool, UnwritableOutputIsReported)
{
    write("in.ppm", picture(4, 4), ppmHeader(4, 4));
    expectError(kelcc({"convert", "in.ppm", path("missing/out.png")}), 1, "cannot write");
    expectError(kelcc({"convert", "missing.ppm", "out.png"}), 1, "cannot read");
    expectOnly({"in.ppm"});
}

TEST_F(Tool, FailureMidStreamLeavesNoFile)
{
    // the third frame is cut short: by then two frames are written to the temporary file
    const std::string header = "YUV4MPEG2 W16 H8 F25:1 C420jpeg\n";
    Bytes file(header.begin(), header.end());
    for (unsigned k = 0; k < 3; ++k) {
        const Bytes f = noise(W * H * 3 / 2, k);
        const std::string mark = "FRAME\n";
        file.insert(file.end(), mark.begin(), mark.end());
        file.insert(file.end(), f.begin(), f.end() - (k == 2 ? 50 : 0));
    }
    write("in.y4m", file);
    expectError(kelcc({"convert", "in.y4m", "out.yuy2"}), 1, "frame 3 is cut short");
    // an existing output is left as it was
    write("keep.yuy2", Bytes{1, 2, 3});
    expectError(kelcc({"convert", "in.y4m", "keep.yuy2"}), 1, "frame 3 is cut short");
    EXPECT_EQ(bytes("keep.yuy2"), (Bytes{1, 2, 3}));
    expectOnly({"in.y4m", "keep.yuy2"});
}

TEST_F(Tool, SeveralFramesIntoOneImageIsRefused)
{
    write("in.gray", noise(W * H * 2, 3));
    expectError(kelcc({"convert", "in.gray", "out.png", "--size", "16x8"}), 1, "has 2 frames");
    ASSERT_EQ(kelcc({"convert", "in.gray", "out.png", "--size", "16x8", "--frame", "2"}).status, 0);
    expectError(kelcc({"convert", "in.gray", "x.png", "--size", "16x8", "--frame", "3"}), 1, "no frame 3");
    expectError(kelcc({"convert", "in.gray", "x.rggb8", "--size", "16x8"}), 1, "no conversion from gray to rggb8");
    expectOnly({"in.gray", "out.png"});
}

TEST_F(Tool, LibraryRefusalsAreReported)
{
    write("in.ppm", picture(W, H), ppmHeader(W, H));
    expectError(kelcc({"dither", "in.ppm", "o.ppm", "--levels", "300"}), 1, "levels outside the limits");
    expectError(kelcc({"twist", "in.ppm", "o.ppm", "--matrix", "1,2,3"}), 2, "12 numbers");
    expectOnly({"in.ppm"});
}

// ---- help and info ---------------------------------------------------------------------------

TEST_F(Tool, EveryCommandHasAManualPage)
{
    for (const char* c : {"convert", "demosaic", "dither", "lab", "hsv", "hls", "xyz", "luv", "ycc", "ycocg", "gamma", "twist", "info"}) {
        const Result r = kelcc({c, "--help"});
        EXPECT_EQ(r.status, 0) << c;
        for (const char* section : {"NAME", "SYNOPSIS", "DESCRIPTION", "EXIT STATUS"})
            EXPECT_NE(r.out.find(section), std::string::npos) << c << " " << section;
    }
    EXPECT_NE(kelcc({"help", "formats"}).out.find("yuv411p"), std::string::npos);
}

TEST_F(Tool, InfoTellsVersionThreadsAndTargets)
{
    const Result r = kelcc({"info", "--threads", "3"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find(kelccGetLibVersion()->version), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("threads:  3"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("SIMD:"), std::string::npos) << r.out;
}

// ---- ffmpeg reads what kelcc writes --------------------------------------------------------

TEST_F(Tool, FfmpegReadsY4mAndRawOutputs)
{
    if (std::system("command -v ffmpeg >/dev/null 2>&1") != 0) GTEST_SKIP() << "ffmpeg is not installed";
    const Bytes rgb = picture(W, H);
    write("in.ppm", rgb, ppmHeader(W, H));
    ASSERT_EQ(kelcc({"convert", "in.ppm", "a.y4m"}).status, 0);
    ASSERT_EQ(kelcc({"convert", "in.ppm", "a.nv12"}).status, 0);
    ASSERT_EQ(kelcc({"convert", "in.ppm", "a.i420"}).status, 0);
    // ffmpeg's yuv420p from the y4m and its repacking of our nv12 give our i420
    const std::string q = " -v error -y ";
    ASSERT_EQ(std::system(("ffmpeg" + q + "-i " + path("a.y4m") + " -f rawvideo -pix_fmt yuv420p " + path("f1.yuv")).c_str()), 0);
    ASSERT_EQ(std::system(("ffmpeg" + q + "-f rawvideo -pix_fmt nv12 -s 16x8 -i " + path("a.nv12") +
                           " -f rawvideo -pix_fmt yuv420p " + path("f2.yuv")).c_str()),
              0);
    EXPECT_EQ(bytes("f1.yuv"), bytes("a.i420"));
    EXPECT_EQ(bytes("f2.yuv"), bytes("a.i420"));
    // three frames of 4:4:4 from a raw file, and 16-bit gray
    write("three.yuv444p", noise(W * H * 3 * 3, 8));
    ASSERT_EQ(kelcc({"convert", "three.yuv444p", "three.y4m", "--size", "16x8"}).status, 0);
    ASSERT_EQ(std::system(("ffmpeg" + q + "-i " + path("three.y4m") + " -f rawvideo -pix_fmt yuv444p " + path("f3.yuv")).c_str()), 0);
    EXPECT_EQ(bytes("f3.yuv"), bytes("three.yuv444p"));
    write("in16.pgm", noise(W * H * 2, 9), "P5\n16 8\n65535\n");
    ASSERT_EQ(kelcc({"convert", "in16.pgm", "a.gray16"}).status, 0);
    ASSERT_EQ(std::system(("ffmpeg" + q + "-f rawvideo -pix_fmt gray16le -s 16x8 -i " + path("a.gray16") + " -f image2 -c:v pgm " +
                           path("f4.pgm")).c_str()),
              0);
    EXPECT_EQ(bytes("f4.pgm"), bytes("in16.pgm"));
}

}  // namespace
