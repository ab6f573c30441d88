// Planar YCbCr (4:2:2, 4:1:1, full resolution, filtered 4:2:0) to RGB, BGR and
// BGRA, and 4:2:2 pixel order to planes, against libyuv.  This libyuv has no
// 4:1:1 source: I422ToRGB24 and I422ToARGB are the closest jobs (half the
// chroma bytes again), and its 4:2:0 to ARGB stands for the filtered member.
// libyuv's RAW is R, G, B in memory, as our RGB; its RGB24 is B, G, R and its
// ARGB B, G, R, A, as our BGR and BGRA.
#include "peers.h"

#if KELCC_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using namespace peers;

// The planes of one random image with chroma planes chromaWidth x
// chromaHeight, a packed 4:2:2 copy, and a destination of four bytes a pixel
// (or three planes).
struct FramePlanes {
    FramePlanes(int chromaWidth, int chromaHeight)
        : cb(randomBytes(static_cast<std::size_t>(chromaWidth) * chromaHeight, 2)),
          cr(randomBytes(static_cast<std::size_t>(chromaWidth) * chromaHeight, 3)), chromaStep(chromaWidth)
    {
    }
    std::vector<Kel8u> luma = randomBytes(kWidth * kHeight, 1), cb, cr;
    std::vector<Kel8u> packed = randomBytes(2 * kWidth * kHeight, 4), out = std::vector<Kel8u>(4 * kWidth * kHeight);
    int chromaStep;
    const Kel8u* planes[3] = {luma.data(), cb.data(), cr.data()};
    const int steps[3] = {kWidth, chromaStep, chromaStep};
    Kel8u* outPlanes[3] = {out.data(), out.data() + kWidth * kHeight, out.data() + 2 * kWidth * kHeight};
};

void addYCbCr05bJobs(std::vector<Job>& jobs)
{
    static FramePlanes ours422(kWidth / 2, kHeight), peer422(kWidth / 2, kHeight);
    static FramePlanes ours411(kWidth / 4, kHeight), peer411(kWidth / 2, kHeight);
    static FramePlanes ours444(kWidth, kHeight), peer444(kWidth, kHeight);
    static FramePlanes ours420(kWidth / 2, kHeight / 2), peer420(kWidth / 2, kHeight / 2);
    static const KelImageSize size{kWidth, kHeight};
    Job p422{"keliYCbCr422ToRGB_8u_P3C3R", "libyuv I422ToRAW",
             [] { keliYCbCr422ToRGB_8u_P3C3R(ours422.planes, ours422.steps, ours422.out.data(), 3 * kWidth, size); },
             {}};
    Job p411{"keliYCbCr411ToBGR_8u_P3C3R", "libyuv I422ToRGB24",
             [] { keliYCbCr411ToBGR_8u_P3C3R(ours411.planes, ours411.steps, ours411.out.data(), 3 * kWidth, size); },
             {}};
    Job p411a{"keliYCbCr411ToBGR_8u_P3C4R", "libyuv I422ToARGB",
              [] {
                  keliYCbCr411ToBGR_8u_P3C4R(ours411.planes, ours411.steps, ours411.out.data(), 4 * kWidth, size, 255);
              },
              {}};
    Job p444{"keliYCbCrToBGR_8u_P3C3R", "libyuv I444ToRGB24",
             [] { keliYCbCrToBGR_8u_P3C3R(ours444.planes, kWidth, ours444.out.data(), 3 * kWidth, size); }, {}};
    Job p444a{"keliYCbCrToBGR_8u_P3C4R", "libyuv I444ToARGB",
              [] { keliYCbCrToBGR_8u_P3C4R(ours444.planes, kWidth, ours444.out.data(), 4 * kWidth, size, 255); }, {}};
    Job filter{"keliYCrCb420ToBGR_Filter_8u_P3C4R", "libyuv I420ToARGB",
               [] {
                   keliYCrCb420ToBGR_Filter_8u_P3C4R(ours420.planes, ours420.steps, ours420.out.data(), 4 * kWidth,
                                                     size, 255);
               },
               {}};
    Job c2p3{"keliYCbCr422ToRGB_8u_C2P3R", "libyuv YUY2ToARGB",
             [] { keliYCbCr422ToRGB_8u_C2P3R(ours422.packed.data(), 2 * kWidth, ours422.outPlanes, kWidth, size); },
             {}};
    Job c2p3r{"keliYCrCb422ToRGB_8u_C2P3R", "libyuv YUY2ToARGB",
              [] { keliYCrCb422ToRGB_8u_C2P3R(ours422.packed.data(), 2 * kWidth, ours422.outPlanes, kWidth, size); },
              {}};
#if KELCC_HAVE_LIBYUV
    p422.runPeer = [] {
        libyuv::I422ToRAW(peer422.luma.data(), kWidth, peer422.cb.data(), kWidth / 2, peer422.cr.data(), kWidth / 2,
                          peer422.out.data(), 3 * kWidth, kWidth, kHeight);
    };
    p411.runPeer = [] {
        libyuv::I422ToRGB24(peer411.luma.data(), kWidth, peer411.cb.data(), kWidth / 2, peer411.cr.data(), kWidth / 2,
                            peer411.out.data(), 3 * kWidth, kWidth, kHeight);
    };
    p411a.runPeer = [] {
        libyuv::I422ToARGB(peer411.luma.data(), kWidth, peer411.cb.data(), kWidth / 2, peer411.cr.data(), kWidth / 2,
                           peer411.out.data(), 4 * kWidth, kWidth, kHeight);
    };
    p444.runPeer = [] {
        libyuv::I444ToRGB24(peer444.luma.data(), kWidth, peer444.cb.data(), kWidth, peer444.cr.data(), kWidth,
                            peer444.out.data(), 3 * kWidth, kWidth, kHeight);
    };
    p444a.runPeer = [] {
        libyuv::I444ToARGB(peer444.luma.data(), kWidth, peer444.cb.data(), kWidth, peer444.cr.data(), kWidth,
                           peer444.out.data(), 4 * kWidth, kWidth, kHeight);
    };
    filter.runPeer = [] {
        libyuv::I420ToARGB(peer420.luma.data(), kWidth, peer420.cb.data(), kWidth / 2, peer420.cr.data(), kWidth / 2,
                           peer420.out.data(), 4 * kWidth, kWidth, kHeight);
    };
    c2p3.runPeer = c2p3r.runPeer = [] {
        libyuv::YUY2ToARGB(peer422.packed.data(), 2 * kWidth, peer422.out.data(), 4 * kWidth, kWidth, kHeight);
    };
#endif
    for (const Job& job : {p422, p411, p411a, p444, p444a, filter, c2p3, c2p3r}) jobs.push_back(job);
}

const AddJobs kAdded(addYCbCr05bJobs);

} // namespace
