/* kelcore.h - the piece of the family's core library that the colour-conversion
   library uses: the team size of its parallel regions. */
#ifndef KELCORE_H
#define KELCORE_H

#ifdef __cplusplus
extern "C" {
#endif

/* Requested team size of every parallel region opened by libkelccpx.  The
   library reads it, by value, each time a region opens, and never writes it.
   It starts as the OpenMP runtime's default team size (omp_get_max_threads()
   when the core library is loaded, so OMP_NUM_THREADS is honoured); a host
   changes it by plain assignment between calls, e.g.
       threads_omp_of_n_kel = 1;   // run every call on the calling thread
   The value goes to the num_threads clause unchanged, so it must be >= 1. */
extern __attribute__((visibility("default"))) int threads_omp_of_n_kel;

#ifdef __cplusplus
}
#endif

#endif /* KELCORE_H */
