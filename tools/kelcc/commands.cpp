// commands.cpp - what each subcommand does: read frames, run the library on
// them, convert to the output's layout and write.
#include "commands.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <set>

#include <unistd.h>

#include <kelcc.h>
#include <kelcore.h>

#if KELCC_TOOL_HWY
#include <hwy/targets.h>
#endif

#include "convert.h"
#include "files.h"

namespace kelcctool {

namespace {

// ---- shared machinery ----------------------------------------------------------

void noteOnce(const std::string& line)
{
    static std::set<std::string> said;
    if (said.insert(line).second) note(line);
}

// The frame in another layout, through the library's conversions.
Frame toLayout(Frame frame, Layout layout, bool crop)
{
    if (frame.layout == layout) return frame;
    const Route route = findRoute(frame.layout, layout);
    noteOnce(std::string(layoutName(frame.layout)) + " to " + layoutName(layout) + ": " + route.describe());
    return runRoute(route, fitFrame(std::move(frame), route, crop));
}

class Progress {
public:
    explicit Progress(int total) : total_(total), shown_(isatty(2) && total != 1) {}
    void update(int done)
    {
        if (!shown_) return;
        if (total_ > 1) {
            const int width = 30, filled = std::min(width, done * width / total_);
            std::fprintf(stderr, "\rkelcc: [%s%s] %d/%d frames", std::string(static_cast<std::size_t>(filled), '#').c_str(),
                         std::string(static_cast<std::size_t>(width - filled), '.').c_str(), done, total_);
        } else {
            std::fprintf(stderr, "\rkelcc: %d frames", done);
        }
        std::fflush(stderr);
        drawn_ = true;
    }
    ~Progress()
    {
        if (drawn_) std::fputc('\n', stderr);
    }

private:
    int total_;
    bool shown_;
    bool drawn_ = false;
};

void needArgs(const Options& o, std::size_t n, const char* command)
{
    if (o.args.size() != n)
        throw UsageFailure(std::string(command) + " takes " + (n == 2 ? "IN and OUT" : "no file names") + " (kelcc " + command + " --help)");
}

// A library call of a command's own work: named once under --verbose.
void called(KelResult status, const char* call)
{
    noteOnce(std::string("calls ") + call);
    checkStatus(status, call);
}

// Reads IN, hands each frame to `work` (which may change its layout: `produces`
// tells to which, from the input's layout), converts the result to what OUT
// holds and writes it.  `exact`: OUT must hold the work's layout as it is.
void pipeline(const Options& o, const std::function<Frame(Frame)>& work, const std::function<Layout(Layout)>& produces,
              bool exact = false)
{
    const FileInfo in = describeFile(o.args[0], o.from);
    const FileInfo out = describeFile(o.args[1], o.to);
    auto reader = openReader(in, o.size);
    const Layout made = produces(reader->layout());
    const Layout target = outputLayout(out, made);
    if (exact && target != made)
        throw UsageFailure(std::string("a ") + containerName(out.container) + " file can't hold these " + layoutName(made) +
                           "-shaped planes as they are (see --depth)");
    findRoute(made, target);  // no conversion: say so before writing anything
    if (made == target) noteOnce(std::string(layoutName(made)) + " written as it is");
    const int count = reader->frameCount();
    if (!holdsFrames(out.container) && count > 1 && o.frame == 0)
        throw Failure(in.path + " has " + std::to_string(count) + " frames and a " + containerName(out.container) +
                      " file holds one: pick one with --frame N, or write y4m or raw");
    if (o.frame > 0 && count >= 0 && o.frame > count)
        throw Failure(in.path + " has " + std::to_string(count) + " frames, no frame " + std::to_string(o.frame));
    auto writer = openWriter(out, target, reader->tags);
    Progress progress(o.frame > 0 ? 1 : count);
    Frame frame;
    int index = 0, written = 0;
    while (reader->next(frame)) {
        ++index;
        if (o.frame > 0 && index != o.frame) continue;
        writer->write(toLayout(work(std::move(frame)), target, o.crop));
        progress.update(++written);
        if (o.frame > 0) break;
    }
    if (o.frame > 0 && written == 0)
        throw Failure(in.path + " has " + std::to_string(index) + " frames, no frame " + std::to_string(o.frame));
    writer->finish();
}

bool is16(Layout l) { return l == Layout::rgb48 || l == Layout::gray16 || (isBayer(l) && layoutInfo(l).plane[0].bytes == 2); }
bool isFloat(Layout l) { return l == Layout::rgbf || l == Layout::grayf; }

// ---- convert and demosaic ------------------------------------------------------------

void runConvert(const Options& o)
{
    needArgs(o, 2, "convert");
    pipeline(o, [](Frame f) { return f; }, [](Layout l) { return l; });
}

void runDemosaic(const Options& o)
{
    needArgs(o, 2, "demosaic");
    std::optional<Layout> pattern;
    if (!o.pattern.empty()) {
        pattern = layoutByName(o.pattern);
        if (!pattern) pattern = layoutByName(o.pattern + "8");
        if (!pattern || !isBayer(*pattern)) throw UsageFailure("--pattern wants rggb, bggr, grbg or gbrg (with 8 or 16), not '" + o.pattern + "'");
    }
    Options opts = o;
    if (pattern && opts.from.empty()) {
        bool raw = true;
        try {
            raw = describeFile(o.args[0], "").container == Container::raw;
        } catch (const UsageFailure&) {  // a name that tells nothing: the pattern tells it
        }
        if (raw) opts.from = layoutName(*pattern);
    }
    // A gray image holds a mosaic as well: --pattern tells its tile.
    auto relabel = [pattern](Layout l) -> Layout {
        if (pattern && (l == Layout::gray || l == Layout::gray16 || isBayer(l))) {
            const bool wide = l == Layout::gray16 || is16(l);
            const int base = static_cast<int>(*pattern) - (is16(*pattern) ? 4 : 0);
            return static_cast<Layout>(base + (wide ? 4 : 0));
        }
        if (!isBayer(l))
            throw Failure(std::string("demosaic wants a Bayer mosaic (a raw rggb8 ... gbrg16 file, or a gray image with --pattern), not ") +
                          layoutName(l));
        return l;
    };
    pipeline(opts,
             [relabel, &o](Frame f) {
                 f.layout = relabel(f.layout);
                 const Layout rgb = is16(f.layout) ? Layout::rgb48 : Layout::rgb24;
                 return toLayout(std::move(f), rgb, o.crop);
             },
             [relabel](Layout l) { return is16(relabel(l)) ? Layout::rgb48 : Layout::rgb24; });
}

// ---- dither ----------------------------------------------------------------------------

KelDitherKind ditherKind(const std::string& method)
{
    if (method == "off" || method == "none") return kelDitherOff;
    if (method == "ordered") return kelDitherOrdered;
    if (method == "fs") return kelDitherFloydSteinberg;
    if (method == "jjn") return kelDitherJarvisJudiceNinke;
    if (method == "stucki") return kelDitherStucki;
    throw UsageFailure("--method wants off, ordered, fs, jjn or stucki, not '" + method + "'");
}

bool planarYuv(Layout l)
{
    return l == Layout::i420 || l == Layout::yv12 || l == Layout::yuv422p || l == Layout::yuv411p || l == Layout::yuv444p;
}

// The layout dither works in for a source layout, and the layout it writes.
Layout ditherInput(Layout l)
{
    switch (l) {
    case Layout::gray: case Layout::rgb24: case Layout::bgr24: case Layout::rgba: case Layout::bgra:
    case Layout::gray16: case Layout::rgb48: case Layout::grayf: case Layout::rgbf:
        return l;
    default: break;
    }
    if (planarYuv(l)) return l;
    return is16(l) ? Layout::rgb48 : Layout::rgb24;
}

Layout ditherOutput(Layout in, int depth)
{
    const bool gray = in == Layout::gray || in == Layout::gray16 || in == Layout::grayf;
    if (is16(in)) return depth == 8 ? (gray ? Layout::gray : Layout::rgb24) : in;
    if (isFloat(in)) return depth == 16 ? (gray ? Layout::gray16 : Layout::rgb48) : (gray ? Layout::gray : Layout::rgb24);
    return in;
}

template <typename TS, typename TD>
using ReduceFn = KelResult (*)(const TS*, int, TD*, int, KelImageSize, int, KelDitherKind, int);

template <typename TS, typename TD>
void reduce(ReduceFn<TS, TD> fn, const char* name, const Frame& s, int sp, Frame& d, int dp, KelImageSize size, const Options& o,
            KelDitherKind kind)
{
    called(fn(reinterpret_cast<const TS*>(s.u8(sp)), s.step(sp), reinterpret_cast<TD*>(d.u8(dp)), d.step(dp), size, o.noise, kind,
                   o.levels),
                name);
}
#define REDUCE(fn, TS, TD) reduce<TS, TD>(fn, #fn, s, p, d, p, size, o, kind)

Frame ditherFrame(Frame src, const Options& o, KelDitherKind kind)
{
    const Layout work = ditherInput(src.layout);
    Frame s = toLayout(std::move(src), work, o.crop);
    Frame d(ditherOutput(s.layout, o.depth), s.width, s.height);
    for (int p = 0; p < layoutInfo(s.layout).planes; ++p) {
        const KelImageSize size{s.step(p) / layoutInfo(s.layout).plane[p].bytes, s.rows(p)};
        const int channels = layoutInfo(s.layout).plane[p].bytes / (is16(s.layout) ? 2 : isFloat(s.layout) ? 4 : 1);
        const bool out16 = is16(d.layout);
        switch (s.layout) {
        case Layout::rgba: case Layout::bgra: REDUCE(keliReduceBits_8u_AC4R, Kel8u, Kel8u); break;
        case Layout::gray16: case Layout::rgb48:
            if (out16) channels == 1 ? REDUCE(keliReduceBits_16u_C1R, Kel16u, Kel16u) : REDUCE(keliReduceBits_16u_C3R, Kel16u, Kel16u);
            else channels == 1 ? REDUCE(keliReduceBits_16u8u_C1R, Kel16u, Kel8u) : REDUCE(keliReduceBits_16u8u_C3R, Kel16u, Kel8u);
            break;
        case Layout::grayf: case Layout::rgbf:
            if (out16) channels == 1 ? REDUCE(keliReduceBits_32f16u_C1R, Kel32f, Kel16u) : REDUCE(keliReduceBits_32f16u_C3R, Kel32f, Kel16u);
            else channels == 1 ? REDUCE(keliReduceBits_32f8u_C1R, Kel32f, Kel8u) : REDUCE(keliReduceBits_32f8u_C3R, Kel32f, Kel8u);
            break;
        default: channels == 1 ? REDUCE(keliReduceBits_8u_C1R, Kel8u, Kel8u) : REDUCE(keliReduceBits_8u_C3R, Kel8u, Kel8u); break;
        }
    }
    if (s.layout == Layout::rgba || s.layout == Layout::bgra)  // the fourth sample is left alone: carry the alpha over
        for (std::size_t i = 3; i < d.data.size(); i += 4) d.data[i] = s.data[i];
    return d;
}

void runDither(const Options& o)
{
    needArgs(o, 2, "dither");
    if (!o.hasLevels) throw UsageFailure("dither needs --levels N");
    if (o.depth != 0 && o.depth != 8 && o.depth != 16) throw UsageFailure("--depth for dither is 8 or 16");
    const KelDitherKind kind = ditherKind(o.method.empty() ? "off" : o.method);
    pipeline(o, [&o, kind](Frame f) { return ditherFrame(std::move(f), o, kind); },
             [&o](Layout l) { return ditherOutput(ditherInput(l), o.depth); });
}

// ---- gamma and twist ------------------------------------------------------------------

Layout rgbWorkLayout(Layout l, bool orderMatters)
{
    switch (l) {
    case Layout::rgb24: case Layout::rgba: case Layout::rgb48: case Layout::rgbf: return l;
    case Layout::bgr24: return orderMatters ? Layout::rgb24 : l;
    case Layout::bgra: return orderMatters ? Layout::rgba : l;
    case Layout::grayf: return Layout::rgbf;
    default: return is16(l) ? Layout::rgb48 : Layout::rgb24;
    }
}

std::vector<float> parseFloats(const std::string& text, const char* option)
{
    std::vector<float> values;
    const char* p = text.c_str();
    while (*p) {
        char* end = nullptr;
        const float v = std::strtof(p, &end);
        if (end == p) throw UsageFailure(std::string(option) + " wants numbers separated by commas, not '" + text + "'");
        values.push_back(v);
        p = end;
        if (*p == ',') ++p;
        else if (*p) throw UsageFailure(std::string(option) + " wants numbers separated by commas, not '" + text + "'");
    }
    return values;
}

void runGamma(const Options& o)
{
    needArgs(o, 2, "gamma");
    float low = 0.0f, high = 1.0f;
    if (!o.range.empty()) {
        const auto r = parseFloats(o.range, "--range");
        if (r.size() != 2) throw UsageFailure("--range wants LOW,HIGH");
        low = r[0];
        high = r[1];
    }
    const bool inv = o.inverse;
    pipeline(o,
             [&o, inv, low, high](Frame f) {
                 const Layout work = rgbWorkLayout(f.layout, false);
                 Frame s = toLayout(std::move(f), work, o.crop);
                 Frame d(s.layout, s.width, s.height);
                 const KelImageSize z = s.size();
                 switch (s.layout) {
                 case Layout::rgba: case Layout::bgra:
                     d.data = s.data;  // the fourth sample is left as it was
                     if (inv) called(keliGammaInv_8u_AC4R(s.u8(), s.step(0), d.u8(), d.step(0), z), "keliGammaInv_8u_AC4R");
                     else called(keliGammaFwd_8u_AC4R(s.u8(), s.step(0), d.u8(), d.step(0), z), "keliGammaFwd_8u_AC4R");
                     break;
                 case Layout::rgb48:
                     if (inv) called(keliGammaInv_16u_C3R(s.u16(), s.step(0), d.u16(), d.step(0), z), "keliGammaInv_16u_C3R");
                     else called(keliGammaFwd_16u_C3R(s.u16(), s.step(0), d.u16(), d.step(0), z), "keliGammaFwd_16u_C3R");
                     break;
                 case Layout::rgbf:
                     if (inv) called(keliGammaInv_32f_C3R(s.f32(), s.step(0), d.f32(), d.step(0), z, low, high), "keliGammaInv_32f_C3R");
                     else called(keliGammaFwd_32f_C3R(s.f32(), s.step(0), d.f32(), d.step(0), z, low, high), "keliGammaFwd_32f_C3R");
                     break;
                 default:
                     if (inv) called(keliGammaInv_8u_C3R(s.u8(), s.step(0), d.u8(), d.step(0), z), "keliGammaInv_8u_C3R");
                     else called(keliGammaFwd_8u_C3R(s.u8(), s.step(0), d.u8(), d.step(0), z), "keliGammaFwd_8u_C3R");
                     break;
                 }
                 return d;
             },
             [](Layout l) { return rgbWorkLayout(l, false); });
}

void runTwist(const Options& o)
{
    needArgs(o, 2, "twist");
    if (o.matrix.empty()) throw UsageFailure("twist needs --matrix with 12 numbers (3 rows of R, G, B weights and a constant)");
    const std::vector<float> m = parseFloats(o.matrix, "--matrix");
    if (m.size() != 12) throw UsageFailure("--matrix wants 12 numbers, not " + std::to_string(m.size()));
    pipeline(o,
             [&o, m](Frame f) {
                 const Layout work = rgbWorkLayout(f.layout, true);
                 Frame s = toLayout(std::move(f), work, o.crop);
                 Frame d(s.layout, s.width, s.height);
                 const KelImageSize z = s.size();
                 switch (s.layout) {
                 case Layout::rgba:
                     d.data = s.data;  // alpha stays
                     called(keliColorTwist32f_8u_AC4R(s.u8(), s.step(0), d.u8(), d.step(0), z, m.data()), "keliColorTwist32f_8u_AC4R");
                     break;
                 case Layout::rgb48:
                     called(keliColorTwist32f_16u_C3R(s.u16(), s.step(0), d.u16(), d.step(0), z, m.data()), "keliColorTwist32f_16u_C3R");
                     break;
                 case Layout::rgbf:
                     called(keliColorTwist_32f_C3R(s.f32(), s.step(0), d.f32(), d.step(0), z, m.data()), "keliColorTwist_32f_C3R");
                     break;
                 default:
                     called(keliColorTwist32f_8u_C3R(s.u8(), s.step(0), d.u8(), d.step(0), z, m.data()), "keliColorTwist32f_8u_C3R");
                     break;
                 }
                 return d;
             },
             [](Layout l) { return rgbWorkLayout(l, true); });
}

// ---- colour models: planes in a three-channel image -------------------------------------

using PlaneFn = std::function<void(const Frame&, Frame&)>;

template <typename TS, typename TD, KelResult (*F)(const TS*, int, TD*, int, KelImageSize)>
void callC3(const Frame& s, Frame& d, const char* name)
{
    called(F(reinterpret_cast<const TS*>(s.u8()), s.step(0), reinterpret_cast<TD*>(d.u8()), d.step(0), s.size()), name);
}

struct ModelForm {
    const char* model;
    int depth;           // of the planes: 8, 16 or 32
    Layout pixels;       // the RGB or BGR side
    void (*forward)(const Frame&, Frame&);
    void (*inverse)(const Frame&, Frame&);
};

#define C3(TS, TD, fn) [](const Frame& s, Frame& d) { callC3<TS, TD, fn>(s, d, #fn); }
// YCoCg planes are signed 16-bit: a 16-bit image holds them moved by 32768, a
// float image as they are.
template <bool Rev>
void ycocgForward(const Frame& s, Frame& d)
{
    std::vector<Kel16s> planes(static_cast<std::size_t>(s.width) * s.height * 3);
    const std::size_t n = static_cast<std::size_t>(s.width) * s.height;
    Kel16s* const p[3] = {planes.data(), planes.data() + n, planes.data() + 2 * n};
    const int step = s.width * 2;
    if (Rev) called(keliBGRToYCoCg_Rev_8u16s_C3P3R(s.u8(), s.step(0), p, step, s.size()), "keliBGRToYCoCg_Rev_8u16s_C3P3R");
    else called(keliBGRToYCoCg_8u16s_C3P3R(s.u8(), s.step(0), p, step, s.size()), "keliBGRToYCoCg_8u16s_C3P3R");
    for (std::size_t i = 0; i < n; ++i)
        for (int c = 0; c < 3; ++c) {
            if (d.layout == Layout::rgbf) d.f32()[i * 3 + c] = p[c][i];
            else d.u16()[i * 3 + c] = static_cast<Kel16u>(p[c][i] + 32768);
        }
}

template <bool Rev>
void ycocgInverse(const Frame& s, Frame& d)
{
    const std::size_t n = static_cast<std::size_t>(s.width) * s.height;
    std::vector<Kel16s> planes(n * 3);
    Kel16s* const p[3] = {planes.data(), planes.data() + n, planes.data() + 2 * n};
    for (std::size_t i = 0; i < n; ++i)
        for (int c = 0; c < 3; ++c) {
            if (s.layout == Layout::rgbf) {
                const float v = s.f32()[i * 3 + c];
                p[c][i] = static_cast<Kel16s>(std::isnan(v) ? 0.0f : std::lround(std::fmin(32767.0f, std::fmax(-32768.0f, v))));
            } else {
                p[c][i] = static_cast<Kel16s>(static_cast<int>(s.u16()[i * 3 + c]) - 32768);
            }
        }
    const Kel16s* const q[3] = {p[0], p[1], p[2]};
    const int step = s.width * 2;
    if (Rev) called(keliYCoCgToBGR_Rev_16s8u_P3C3R(q, step, d.u8(), d.step(0), s.size()), "keliYCoCgToBGR_Rev_16s8u_P3C3R");
    else called(keliYCoCgToBGR_16s8u_P3C3R(q, step, d.u8(), d.step(0), s.size()), "keliYCoCgToBGR_16s8u_P3C3R");
}

const std::vector<ModelForm>& modelForms()
{
    static const std::vector<ModelForm> forms = {
        ModelForm{"lab", 8, Layout::bgr24, C3(Kel8u, Kel8u, keliBGRToLab_8u_C3R), C3(Kel8u, Kel8u, keliLabToBGR_8u_C3R)},
        ModelForm{"lab", 16, Layout::bgr24, C3(Kel8u, Kel16u, keliBGRToLab_8u16u_C3R), C3(Kel16u, Kel8u, keliLabToBGR_16u8u_C3R)},
        ModelForm{"hsv", 8, Layout::rgb24, C3(Kel8u, Kel8u, keliRGBToHSV_8u_C3R), C3(Kel8u, Kel8u, keliHSVToRGB_8u_C3R)},
        ModelForm{"hsv", 16, Layout::rgb48, C3(Kel16u, Kel16u, keliRGBToHSV_16u_C3R), C3(Kel16u, Kel16u, keliHSVToRGB_16u_C3R)},
        ModelForm{"hls", 8, Layout::rgb24, C3(Kel8u, Kel8u, keliRGBToHLS_8u_C3R), C3(Kel8u, Kel8u, keliHLSToRGB_8u_C3R)},
        ModelForm{"hls", 16, Layout::rgb48, C3(Kel16u, Kel16u, keliRGBToHLS_16u_C3R), C3(Kel16u, Kel16u, keliHLSToRGB_16u_C3R)},
        ModelForm{"hls", 32, Layout::rgbf, C3(Kel32f, Kel32f, keliRGBToHLS_32f_C3R), C3(Kel32f, Kel32f, keliHLSToRGB_32f_C3R)},
        ModelForm{"xyz", 8, Layout::rgb24, C3(Kel8u, Kel8u, keliRGBToXYZ_8u_C3R), C3(Kel8u, Kel8u, keliXYZToRGB_8u_C3R)},
        ModelForm{"xyz", 16, Layout::rgb48, C3(Kel16u, Kel16u, keliRGBToXYZ_16u_C3R), C3(Kel16u, Kel16u, keliXYZToRGB_16u_C3R)},
        ModelForm{"xyz", 32, Layout::rgbf, C3(Kel32f, Kel32f, keliRGBToXYZ_32f_C3R), C3(Kel32f, Kel32f, keliXYZToRGB_32f_C3R)},
        ModelForm{"luv", 8, Layout::rgb24, C3(Kel8u, Kel8u, keliRGBToLUV_8u_C3R), C3(Kel8u, Kel8u, keliLUVToRGB_8u_C3R)},
        ModelForm{"luv", 16, Layout::rgb48, C3(Kel16u, Kel16u, keliRGBToLUV_16u_C3R), C3(Kel16u, Kel16u, keliLUVToRGB_16u_C3R)},
        ModelForm{"luv", 32, Layout::rgbf, C3(Kel32f, Kel32f, keliRGBToLUV_32f_C3R), C3(Kel32f, Kel32f, keliLUVToRGB_32f_C3R)},
        ModelForm{"ycc", 8, Layout::rgb24, C3(Kel8u, Kel8u, keliRGBToYCC_8u_C3R), C3(Kel8u, Kel8u, keliYCCToRGB_8u_C3R)},
        ModelForm{"ycc", 16, Layout::rgb48, C3(Kel16u, Kel16u, keliRGBToYCC_16u_C3R), C3(Kel16u, Kel16u, keliYCCToRGB_16u_C3R)},
        ModelForm{"ycc", 32, Layout::rgbf, C3(Kel32f, Kel32f, keliRGBToYCC_32f_C3R), C3(Kel32f, Kel32f, keliYCCToRGB_32f_C3R)},
        ModelForm{"ycocg", 16, Layout::bgr24, ycocgForward<false>, ycocgInverse<false>},
        ModelForm{"ycocg", 32, Layout::bgr24, ycocgForward<false>, ycocgInverse<false>},
        ModelForm{"ycocg-rev", 16, Layout::bgr24, ycocgForward<true>, ycocgInverse<true>},
        ModelForm{"ycocg-rev", 32, Layout::bgr24, ycocgForward<true>, ycocgInverse<true>},
    };
    return forms;
}

Layout planesLayout(int depth) { return depth == 8 ? Layout::rgb24 : depth == 16 ? Layout::rgb48 : Layout::rgbf; }

void runModel(const Options& o, const char* model)
{
    needArgs(o, 2, model);
    const std::string name = std::string(model) + (o.rev ? "-rev" : "");
    // The depth of the planes: as given, else from the planes' file.
    int depth = o.depth;
    if (depth == 0) {
        const FileInfo planes = describeFile(o.args[o.inverse ? 0 : 1], o.inverse ? o.from : o.to);
        if (o.inverse && planes.container != Container::pfm && planes.container != Container::raw) {
            depth = -1;  // from the image read
        } else {
            depth = planes.container == Container::pfm ? 32 : 8;
            if (name.rfind("ycocg", 0) == 0 && depth == 8) depth = 16;
        }
    }
    auto formFor = [&](int d) -> const ModelForm& {
        for (const ModelForm& f : modelForms())
            if (name == f.model && f.depth == d) return f;
        std::string depths;
        for (const ModelForm& f : modelForms())
            if (name == f.model) depths += (depths.empty() ? "" : ", ") + std::to_string(f.depth);
        throw UsageFailure(name + " planes come in depths " + depths + ", not " + std::to_string(d) +
                           " (--depth, or a .png for 8 and 16 bits, a .pfm for 32)");
    };
    if (depth > 0) formFor(depth);
    if (!o.inverse) {
        const ModelForm& form = formFor(depth);
        pipeline(o,
                 [&form, &o](Frame f) {
                     Frame s = toLayout(std::move(f), form.pixels, o.crop);
                     Frame d(planesLayout(form.depth), s.width, s.height);
                     form.forward(s, d);
                     return d;
                 },
                 [&form](Layout) { return planesLayout(form.depth); }, true);
        return;
    }
    pipeline(o,
             [formFor, depth](Frame f) {
                 if (f.layout != Layout::rgb24 && f.layout != Layout::rgb48 && f.layout != Layout::rgbf)
                     throw Failure(std::string("--inverse reads three planes (a three-channel PNG, PPM or PFM), not ") + layoutName(f.layout));
                 const int d = depth > 0 ? depth : f.layout == Layout::rgb24 ? 8 : f.layout == Layout::rgb48 ? 16 : 32;
                 const ModelForm& form = formFor(d);
                 if (f.layout != planesLayout(d))
                     throw Failure(std::string("--depth ") + std::to_string(d) + " planes are " + layoutName(planesLayout(d)) +
                                   ", and the input is " + layoutName(f.layout));
                 Frame out(form.pixels, f.width, f.height);
                 form.inverse(f, out);
                 return out;
             },
             [formFor, depth](Layout l) {
                 const int d = depth > 0 ? depth : l == Layout::rgb48 ? 16 : l == Layout::rgbf ? 32 : 8;
                 return formFor(d).pixels;
             });
}

// ---- info ---------------------------------------------------------------------------------

void runInfo(const Options& o)
{
    needArgs(o, 0, "info");
    const KelVersionRecord* v = kelccGetLibVersion();
    std::printf("library:  %s %s (%d.%d.%d.%d, target %.4s, built %s)\n", v->name ? v->name : "?", v->version ? v->version : "?",
                v->major, v->minor, v->build, v->revision, v->targetCpu, v->buildDate ? v->buildDate : "?");
    std::printf("threads:  %d (threads_omp_of_n_kel; --threads N or OMP_NUM_THREADS sets it)\n", threads_omp_of_n_kel);
#if KELCC_TOOL_HWY
    std::printf("SIMD:     this processor runs");
    for (int64_t targets = hwy::SupportedTargets(); targets != 0; targets &= targets - 1)
        std::printf(" %s", hwy::TargetName(targets & -targets));
    std::printf("\n          the library was built for targets up to %s\n", KELCC_TOOL_SIMD_CEILING);
#else
    std::printf("SIMD:     none (the library was built with its scalar kernels alone)\n");
#endif
}

void runLab(const Options& o) { runModel(o, "lab"); }
void runHsv(const Options& o) { runModel(o, "hsv"); }
void runHls(const Options& o) { runModel(o, "hls"); }
void runXyz(const Options& o) { runModel(o, "xyz"); }
void runLuv(const Options& o) { runModel(o, "luv"); }
void runYcc(const Options& o) { runModel(o, "ycc"); }
void runYcocg(const Options& o) { runModel(o, "ycocg"); }

}  // namespace

#include "manual.inc"

const Command* findCommand(const std::string& name)
{
    for (const Command& c : commands())
        if (name == c.name) return &c;
    return nullptr;
}

}  // namespace kelcctool
