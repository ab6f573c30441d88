/* Stand-in for the family's core library: it provides the one integer that the
   colour-conversion library imports, the team size of its parallel regions. */
#include "kelcore.h"

#include <omp.h>

int threads_omp_of_n_kel = 1;

/* Runs when the core library is loaded, before any call into libkelccpx can be
   made, so the integer is readable and sensible by the first call. */
__attribute__((constructor)) static void kelcoreInitThreads(void)
{
    int n = omp_get_max_threads();
    threads_omp_of_n_kel = n > 0 ? n : 1;
}
