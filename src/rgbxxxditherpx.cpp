// The 4 x 4 thresholds of the ordered dither on packed 16-bit output, in
// 1/256 of a colour step.
#include "rgbxxxpx.h"

// Pattern 0 8 2 10 / 12 4 14 6 / 3 11 1 9 / 15 7 13 5.  The first table is
// near 139.8 times the pattern but holds its own rounded values; the second
// is exactly 289 times it (a 4-bit level step is 4352 = 15 x 289 + 17).
const std::int32_t bayer_thresh_int[16] = {
    0,    1118, 279,  1398,
    1678, 559,  1957, 839,
    419,  1538, 139,  1258,
    2097, 978,  1817, 699,
};
const std::int32_t bayer_thresh_int_4[16] = {
    0,    2312, 578,  2890,
    3468, 1156, 4046, 1734,
    867,  3179, 289,  2601,
    4335, 2023, 3757, 1445,
};
