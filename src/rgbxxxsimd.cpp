// Vector row kernels of the packed 16-bit family's hot members.
#include "rgbxxxsimd.h"

namespace kel::simdpacked {

packed::CellRowsKernel chooseCells565()
{
    return nullptr;
}
packed::CellRowsKernel chooseCells565Dither()
{
    return nullptr;
}
packed::PairsRowKernel choosePairs565()
{
    return nullptr;
}
packed::PairsRowKernel choosePairs565Dither()
{
    return nullptr;
}

} // namespace kel::simdpacked
