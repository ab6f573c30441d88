/* A plain C99 user of the installed library. */
#include <kelcc.h>
#include <kelcore.h>
#include <stdio.h>
#include <string.h>

int main(void)
{
    const KelVersionRecord* v = kelccGetLibVersion();
    Kel8u rgb[2 * 3] = {255, 255, 255, 0, 0, 0};
    Kel8u ycc[2 * 3];
    KelImageSize size = {2, 1};
    if (v->major != 5 || v->minor != 2 || strcmp(v->targetCpu, "px") != 0) return 1;
    if (threads_omp_of_n_kel < 1) return 2;
    if (keliRGBToYCbCr_8u_C3R(rgb, 6, ycc, 6, size) != kelOk) return 3;
    if (ycc[0] != 235 || ycc[3] != 16 || ycc[1] != 128) return 4;
    if (keliRGBToYCbCr_8u_C3R(NULL, 6, ycc, 6, size) != kelErrNullPointer) return 5;
    printf("%s %s ok\n", v->name, v->version);
    return 0;
}
