#include "config/NyCfg.h"

#include <new>

#include "config/NyCfgId.h"
#include "config/NyCfgLang.h"
#include "config/NyCfgParse.h"
#include "log/NyLog.h"
#include "runtime/NyResult.h"

namespace {

uint32_t CfgLogged(uint32_t u4Result) {
    if (u4Result != NY_OK) {
        NY_LOG_RESULT(u4Result);
    }
    return u4Result;
}

uint32_t CfgInitHandle(const unsigned char* pu1Image, unsigned int u4Length,
                       BlkCfgHandleTag** ppHandle) {
    BlkCfgHandleTag* hCfg = new (std::nothrow) BlkCfgHandleTag();
    if (hCfg == nullptr) {
        return NY_ERR_OUT_OF_MEMORY;
    }
    uint32_t u4Result = CfgTreeParse(pu1Image, u4Length, &hCfg->pTree);
    unsigned int u4Language = 0;
    if (u4Result == NY_OK) {
        u4Result = NyOsGetLanguage(&u4Language);
    }
    if (u4Result == NY_OK) {
        u4Result = NyLang2CfgLang(u4Language, &hCfg->u1Lang);
    }
    if (u4Result != NY_OK) {
        NyCfgRelease(hCfg);
        return u4Result;
    }
    *ppHandle = hCfg;
    return NY_OK;
}

// Reads a number of the id's type through a capacity of u4Size bytes, zero-extended.
uint32_t CfgGetNumber(BlkCfgHandleTag* hCfg, unsigned int u4Id, uint32_t u4Size,
                      uint32_t* pu4Value) {
    unsigned char au1Value[4] = {0, 0, 0, 0};
    unsigned int u4Length = u4Size;
    uint32_t u4Result = NyCfgGetValue(hCfg, u4Id, au1Value, &u4Length);
    if (u4Result != NY_OK) {
        return u4Result;
    }
    switch (NyCfgIdType(u4Id)) {
        case NY_CFG_TYPE_U1:
            *pu4Value = au1Value[0];
            break;
        case NY_CFG_TYPE_U2:
            *pu4Value = NyCfgReadU16(au1Value);
            break;
        default:
            *pu4Value = NyCfgReadU32(au1Value);
            break;
    }
    return NY_OK;
}

// A number whose id must carry exactly u4Type, read through a capacity of its own size.
template <typename T>
uint32_t CfgGetExact(BlkCfgHandleTag* hCfg, unsigned int u4Id, uint32_t u4Type, T* pOut) {
    if (pOut == nullptr || NyCfgIdType(u4Id) != u4Type) {
        return CfgLogged(NY_ERR_INVALID_ARGUMENT);
    }
    uint32_t u4Value = 0;
    uint32_t u4Result = CfgGetNumber(hCfg, u4Id, sizeof(T), &u4Value);
    if (u4Result == NY_OK) {
        *pOut = static_cast<T>(u4Value);
    }
    return u4Result;
}

}  // namespace

uint32_t NyCfgInit(const unsigned char* pu1Image, unsigned int u4Length,
                   BlkCfgHandleTag** ppHandle) {
    if (ppHandle == nullptr) {
        return CfgLogged(NY_ERR_INVALID_ARGUMENT);
    }
    *ppHandle = nullptr;
    if (pu1Image == nullptr) {
        return CfgLogged(NY_ERR_INVALID_ARGUMENT);
    }
    return CfgLogged(CfgInitHandle(pu1Image, u4Length, ppHandle));
}

uint32_t NyCfgRelease(BlkCfgHandleTag* hCfg) {
    if (hCfg != nullptr) {
        CfgTreeDestroy(hCfg->pTree);
        delete hCfg;
    }
    return NY_OK;
}

uint32_t NyCfgGetValue(BlkCfgHandleTag* hCfg, unsigned int u4Id, unsigned char* pu1Out,
                       unsigned int* pu4Length) {
    if (hCfg == nullptr || pu4Length == nullptr) {
        return CfgLogged(NY_ERR_INVALID_ARGUMENT);
    }
    uint32_t u4Type = NyCfgIdType(u4Id);
    uint32_t u4Variant = u4Type == NY_CFG_TYPE_TEXT ? hCfg->u1Lang : 0;
    uint32_t u4StoredType = 0;
    uint32_t u4Result = CfgTreeGetValue(hCfg->pTree, NyCfgIdGroup(u4Id), NyCfgIdItem(u4Id),
                                        u4Variant, &u4StoredType, pu1Out, pu4Length);
    if (u4Result == NY_OK && u4StoredType != u4Type) {
        u4Result = NY_ERR_BAD_ARGUMENT;
    }
    return CfgLogged(u4Result);
}

uint32_t NyCfgGetU4(BlkCfgHandleTag* hCfg, unsigned int u4Id, unsigned int* pu4Out) {
    uint32_t u4Type = NyCfgIdType(u4Id);
    if (pu4Out == nullptr || u4Type < NY_CFG_TYPE_U1 || u4Type > NY_CFG_TYPE_U4) {
        return CfgLogged(NY_ERR_INVALID_ARGUMENT);
    }
    return CfgGetNumber(hCfg, u4Id, 4, pu4Out);
}

uint32_t NyCfgGetU2(BlkCfgHandleTag* hCfg, unsigned int u4Id, unsigned short* pu2Out) {
    return CfgGetExact(hCfg, u4Id, NY_CFG_TYPE_U2, pu2Out);
}

uint32_t NyCfgGetU1(BlkCfgHandleTag* hCfg, unsigned int u4Id, unsigned char* pu1Out) {
    return CfgGetExact(hCfg, u4Id, NY_CFG_TYPE_U1, pu1Out);
}

uint32_t NyCfgSetLangId(BlkCfgHandleTag* hCfg, unsigned int u4LanguageCode) {
    if (hCfg == nullptr) {
        return CfgLogged(NY_ERR_INVALID_ARGUMENT);
    }
    return NyLang2CfgLang(u4LanguageCode, &hCfg->u1Lang);
}
