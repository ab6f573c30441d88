// The packed 16-bit 565 jobs against libyuv: 4:2:0 planes truncated and
// dithered, and 4:2:2 pixel order, for which this libyuv has no one-pass 565
// job: its users go through ARGB (two passes), or have planes.
#include "peers.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace peers;

// One random 4:2:0 image, the same bytes read as 4:2:2 planes, one 4:2:2
// pixel-order image, and destinations of two and four bytes a pixel.
struct FramePacked16 {
    std::vector<Kel8u> luma = randomBytes(kWidth * kHeight, 1), cb = randomBytes(kWidth / 2 * kHeight, 2),
                       cr = randomBytes(kWidth / 2 * kHeight, 3), packed = randomBytes(2 * kWidth * kHeight, 4);
    std::vector<Kel16u> words = std::vector<Kel16u>(kWidth * kHeight);
    std::vector<Kel8u> argb = std::vector<Kel8u>(4 * kWidth * kHeight);
    const Kel8u* planes[3] = {luma.data(), cb.data(), cr.data()};
    const int steps[3] = {kWidth, kWidth / 2, kWidth / 2};
    Kel8u* wordBytes() { return reinterpret_cast<Kel8u*>(words.data()); }
};

// libyuv adds a 4 x 4 table to the 8-bit colour before truncating: our
// pattern 0 8 2 10 / 12 4 14 6 / 3 11 1 9 / 15 7 13 5 halved, 0..7 of the
// 8 a 5-bit level spans.
constexpr Kel8u kPeerDither[16] = {0, 4, 1, 5, 6, 2, 7, 3, 1, 5, 0, 4, 7, 3, 6, 2};

void addPacked16Jobs(std::vector<Job>& jobs)
{
    static FramePacked16 ours, peer;
    static const KelImageSize size{kWidth, kHeight};
    Job cells{"keliYCbCr420ToRGB565_8u16u_P3C3R", "libyuv I420ToRGB565",
              [] { keliYCbCr420ToRGB565_8u16u_P3C3R(ours.planes, ours.steps, ours.words.data(), 2 * kWidth, size); },
              {}};
    Job cellsDither{"keliYCbCr420ToRGB565Dither_8u16u_P3C3R", "libyuv I420ToRGB565Dither",
                    [] {
                        keliYCbCr420ToRGB565Dither_8u16u_P3C3R(ours.planes, ours.steps, ours.words.data(), 2 * kWidth,
                                                               size);
                    },
                    {}};
    Job pairsArgb{"keliYCbCr422ToRGB565_8u16u_C2C3R", "libyuv YUY2ToARGB+ARGBToRGB565",
                  [] { keliYCbCr422ToRGB565_8u16u_C2C3R(ours.packed.data(), 2 * kWidth, ours.words.data(), 2 * kWidth, size); },
                  {}};
    Job pairs565{"keliYCbCr422ToRGB565_8u16u_C2C3R", "libyuv I422ToRGB565 (planes in)",
                 [] { keliYCbCr422ToRGB565_8u16u_C2C3R(ours.packed.data(), 2 * kWidth, ours.words.data(), 2 * kWidth, size); },
                 {}};
    Job pairsDitherArgb{"keliYCbCr422ToRGB565Dither_8u16u_C2C3R", "libyuv YUY2ToARGB+ARGBToRGB565Dither",
                        [] {
                            keliYCbCr422ToRGB565Dither_8u16u_C2C3R(ours.packed.data(), 2 * kWidth, ours.words.data(),
                                                                   2 * kWidth, size);
                        },
                        {}};
#if KELCC_HAVE_LIBYUV
    cells.runPeer = [] {
        libyuv::I420ToRGB565(peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2, peer.cr.data(), kWidth / 2,
                             peer.wordBytes(), 2 * kWidth, kWidth, kHeight);
    };
    cellsDither.runPeer = [] {
        libyuv::I420ToRGB565Dither(peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2, peer.cr.data(), kWidth / 2,
                                   peer.wordBytes(), 2 * kWidth, kPeerDither, kWidth, kHeight);
    };
    pairsArgb.runPeer = [] {
        libyuv::YUY2ToARGB(peer.packed.data(), 2 * kWidth, peer.argb.data(), 4 * kWidth, kWidth, kHeight);
        libyuv::ARGBToRGB565(peer.argb.data(), 4 * kWidth, peer.wordBytes(), 2 * kWidth, kWidth, kHeight);
    };
    pairsDitherArgb.runPeer = [] {
        libyuv::YUY2ToARGB(peer.packed.data(), 2 * kWidth, peer.argb.data(), 4 * kWidth, kWidth, kHeight);
        libyuv::ARGBToRGB565Dither(peer.argb.data(), 4 * kWidth, peer.wordBytes(), 2 * kWidth, kPeerDither, kWidth,
                                   kHeight);
    };
    pairs565.runPeer = [] {
        libyuv::I422ToRGB565(peer.luma.data(), kWidth, peer.cb.data(), kWidth / 2, peer.cr.data(), kWidth / 2,
                             peer.wordBytes(), 2 * kWidth, kWidth, kHeight);
    };
#endif
    for (const Job& job : {cells, cellsDither, pairsArgb, pairs565, pairsDitherArgb}) jobs.push_back(job);
}

const AddJobs kAdded(addPacked16Jobs);

} // namespace
