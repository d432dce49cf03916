#include "NyConfigImage.h"

namespace {
constexpr unsigned int NY_CFG_IMAGE_PREFIX_SIZE = 4;
}

const unsigned char* NyConfigImage() {
    return g_pu1ConfigProjHarbourline + NY_CFG_IMAGE_PREFIX_SIZE;
}

unsigned int NyConfigImageLength() {
    const unsigned char* pu1 = g_pu1ConfigProjHarbourline;
    return (unsigned int)pu1[0] << 24 | (unsigned int)pu1[1] << 16 | (unsigned int)pu1[2] << 8 |
           pu1[3];
}
