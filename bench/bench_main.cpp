// Throughput of every implemented conversion, in megapixels per second, at a
// few image sizes, beside a plain memcpy of the same bytes as the ceiling.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "bench_support.h"

namespace kb {

std::vector<Registration>& registry()
{
    static std::vector<Registration> all;
    return all;
}

Registrar::Registrar(std::string name, Layout src, Layout dst, Runner run)
{
    registry().push_back({std::move(name), src, dst, std::move(run)});
}

Frame::Frame(Layout layout, int width, int height) : layout(layout), width(width), height(height)
{
    const int planes = layout.planes;
    step = width * layout.bytesPerPixel;
    step = (step + 63) / 64 * 64;  // rows start on cache lines, as a caller's would
    stepArray = {step, step, step};
    std::mt19937 gen(42);
    for (int p = 0; p < planes; ++p) {
        storage.emplace_back(static_cast<std::size_t>(step) * static_cast<std::size_t>(height) + 64);
        for (auto& b : storage.back()) b = static_cast<Kel8u>(gen());
        if (layout.unitFloats) {
            auto* samples = reinterpret_cast<float*>(storage.back().data());
            for (std::size_t i = 0; i < storage.back().size() / 4; ++i) samples[i] = (gen() & 0xFFFF) / 65535.0f;
        }
        planePointers[p] = storage.back().data();
    }
}

std::size_t Frame::bytes() const
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * layout.bytesPerPixel * layout.planes;
}

} // namespace kb

namespace {

const KelImageSize kSizes[] = {{64, 64}, {640, 480}, {1920, 1080}};

void setRate(benchmark::State& state, KelImageSize size, std::size_t bytes)
{
    const double pixels = static_cast<double>(size.width) * size.height;
    state.counters["MP/s"] = benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsIterationInvariantRate);
    state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
}

void registerAll()
{
    for (KelImageSize size : kSizes) {
        const std::string suffix = "/" + std::to_string(size.width) + "x" + std::to_string(size.height);
        // Reference ceiling: copying the three-channel image's bytes.
        benchmark::RegisterBenchmark(("memcpy_C3" + suffix).c_str(), [size](benchmark::State& state) {
            kb::Frame src(kb::kC3, size.width, size.height), dst(kb::kC3, size.width, size.height);
            const std::size_t bytes = static_cast<std::size_t>(src.step) * size.height;
            for (auto _ : state) {
                std::memcpy(dst.planePointers[0], src.planePointers[0], bytes);
                benchmark::ClobberMemory();
            }
            setRate(state, size, src.bytes());
        });
        for (const auto& r : kb::registry()) {
            benchmark::RegisterBenchmark((r.name + suffix).c_str(), [size, &r](benchmark::State& state) {
                kb::Frame src(r.src, size.width, size.height), dst(r.dst, size.width, size.height);
                for (auto _ : state) {
                    const KelResult status = r.run(src, dst, size);
                    benchmark::DoNotOptimize(status);
                    benchmark::ClobberMemory();
                }
                setRate(state, size, src.bytes());
            });
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    registerAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
