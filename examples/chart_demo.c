/* chart_demo: the library's main job on a built-in test chart.
   Builds a chart (colour bars, gradients, a zone plate), runs it through the
   library's conversions and back, writes the images as PPM/PGM files and
   prints the round-trip PSNR and the time each conversion took. */
#define _POSIX_C_SOURCE 200809L
#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>

#include <kelcc.h>
#include <kelcore.h>

enum { WIDTH = 640, HEIGHT = 480 };

static double nowSeconds(void)
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (double)ts.tv_sec + (double)ts.tv_nsec * 1e-9;
}

/* Top third: eight colour bars; middle third: red, green, blue and gray ramps;
   bottom third: a circular zone plate. */
static void makeChart(Kel8u* rgb, int width, int height, int step)
{
    static const Kel8u bars[8][3] = {{255, 255, 255}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0},
                                     {255, 0, 255},   {255, 0, 0},   {0, 0, 255},   {0, 0, 0}};
    const int third = height / 3;
    for (int y = 0; y < height; ++y) {
        Kel8u* row = rgb + (size_t)y * (size_t)step;
        for (int x = 0; x < width; ++x) {
            Kel8u* p = row + 3 * x;
            if (y < third) {
                memcpy(p, bars[x * 8 / width], 3);
            } else if (y < 2 * third) {
                const int band = (y - third) * 4 / third;
                const Kel8u v = (Kel8u)(x * 255 / (width - 1));
                p[0] = (band == 0 || band == 3) ? v : 0;
                p[1] = (band == 1 || band == 3) ? v : 0;
                p[2] = (band == 2 || band == 3) ? v : 0;
            } else {
                const double cx = x - width / 2.0, cy = y - (2 * third + (height - 2 * third) / 2.0);
                const double v = 127.5 + 127.5 * cos(3.14159265358979 * (cx * cx + cy * cy) / (double)width);
                p[0] = p[1] = p[2] = (Kel8u)(v + 0.5);
            }
        }
    }
}

static int writeImage(const char* dir, const char* name, const Kel8u* data, int width, int height, int step,
                      int channels)
{
    char path[1024];
    snprintf(path, sizeof path, "%s/%s", dir, name);
    FILE* f = fopen(path, "wb");
    if (!f) {
        fprintf(stderr, "cannot write %s: %s\n", path, strerror(errno));
        return -1;
    }
    fprintf(f, "P%d\n%d %d\n255\n", channels == 3 ? 6 : 5, width, height);
    for (int y = 0; y < height; ++y) fwrite(data + (size_t)y * (size_t)step, 1, (size_t)width * channels, f);
    fclose(f);
    printf("  wrote %s\n", path);
    return 0;
}

static double psnr(const Kel8u* a, const Kel8u* b, size_t n)
{
    double sum = 0.0;
    for (size_t i = 0; i < n; ++i) {
        const double d = (double)a[i] - (double)b[i];
        sum += d * d;
    }
    if (sum == 0.0) return INFINITY;
    return 10.0 * log10(255.0 * 255.0 / (sum / (double)n));
}

typedef KelResult (*PixelCall)(const Kel8u*, int, Kel8u*, int, KelImageSize);

/* Runs forward then inverse, reports both times and the round-trip PSNR. */
static int roundTrip(const char* dir, const char* label, const char* middleName, PixelCall forward,
                     PixelCall inverse, const Kel8u* chart, Kel8u* middle, Kel8u* back, int step)
{
    const KelImageSize size = {WIDTH, HEIGHT};
    double t0 = nowSeconds();
    KelResult st = forward(chart, step, middle, step, size);
    double t1 = nowSeconds();
    if (st != kelOk) {
        fprintf(stderr, "%s forward failed: %d\n", label, (int)st);
        return -1;
    }
    st = inverse(middle, step, back, step, size);
    double t2 = nowSeconds();
    if (st != kelOk) {
        fprintf(stderr, "%s inverse failed: %d\n", label, (int)st);
        return -1;
    }
    printf("%-14s forward %7.3f ms, inverse %7.3f ms, round-trip PSNR %.2f dB\n", label, (t1 - t0) * 1e3,
           (t2 - t1) * 1e3, psnr(chart, back, (size_t)step * HEIGHT));
    if (writeImage(dir, middleName, middle, WIDTH, HEIGHT, step, 3) != 0) return -1;
    char name[256];
    snprintf(name, sizeof name, "%s-roundtrip.ppm", label);
    return writeImage(dir, name, back, WIDTH, HEIGHT, step, 3);
}

int main(int argc, char** argv)
{
    const char* dir = argc > 1 ? argv[1] : "out";
    if (mkdir(dir, 0777) != 0 && errno != EEXIST) {
        fprintf(stderr, "cannot create %s: %s\n", dir, strerror(errno));
        return 1;
    }
    const KelVersionRecord* v = kelccGetLibVersion();
    printf("%s %s (%.4s), %d threads, chart %dx%d\n", v->name, v->version, v->targetCpu, threads_omp_of_n_kel,
           WIDTH, HEIGHT);

    const int step = WIDTH * 3;
    Kel8u* chart = malloc((size_t)step * HEIGHT);
    Kel8u* middle = malloc((size_t)step * HEIGHT);
    Kel8u* back = malloc((size_t)step * HEIGHT);
    if (!chart || !middle || !back) return 1;
    makeChart(chart, WIDTH, HEIGHT, step);
    int failed = writeImage(dir, "chart.ppm", chart, WIDTH, HEIGHT, step, 3) != 0;

    failed |= roundTrip(dir, "ycbcr", "ycbcr.ppm", keliRGBToYCbCr_8u_C3R, keliYCbCrToRGB_8u_C3R, chart, middle,
                        back, step) != 0;
    /* The chart's bytes taken as blue-first pixels: the round trip keeps their order. */
    failed |= roundTrip(dir, "lab", "lab.ppm", keliBGRToLab_8u_C3R, keliLabToBGR_8u_C3R, chart, middle, back,
                        step) != 0;

    failed |= roundTrip(dir, "hls", "hls.ppm", keliRGBToHLS_8u_C3R, keliHLSToRGB_8u_C3R, chart, middle, back,
                        step) != 0;
    failed |= roundTrip(dir, "hsv", "hsv.ppm", keliRGBToHSV_8u_C3R, keliHSVToRGB_8u_C3R, chart, middle, back,
                        step) != 0;

    free(chart);
    free(middle);
    free(back);
    return failed ? 1 : 0;
}
