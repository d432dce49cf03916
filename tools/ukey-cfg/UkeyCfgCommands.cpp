#include "UkeyCfgCommands.h"

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "NyConfigImage.h"
#include "UkeyCfgFormat.h"
#include "config/NyCfg.h"
#include "config/NyCfgId.h"
#include "config/NyCfgIds.h"
#include "runtime/NyResult.h"

namespace {

// The built-in image opened in one language; Get() is null when it could not be parsed.
class CUkeyCfgImage {
public:
    explicit CUkeyCfgImage(uint32_t u4Language) {
        if (NyCfgInit(NyConfigImage(), NyConfigImageLength(), &m_hCfg) == NY_OK) {
            NyCfgSetLangId(m_hCfg, u4Language);
        } else {
            fprintf(stderr, "ukey-cfg: the built-in configuration image is malformed\n");
        }
    }
    ~CUkeyCfgImage() { NyCfgRelease(m_hCfg); }
    CUkeyCfgImage(const CUkeyCfgImage&) = delete;
    CUkeyCfgImage& operator=(const CUkeyCfgImage&) = delete;
    BlkCfgHandleTag* Get() const { return m_hCfg; }

private:
    BlkCfgHandleTag* m_hCfg = nullptr;
};

bool UkeyCfgListImageIds(std::vector<uint32_t>* pvIds) {
    uint32_t u4Count = 0;
    if (NyCfgListIds(NyConfigImage(), NyConfigImageLength(), nullptr, &u4Count) != NY_OK) {
        return false;
    }
    pvIds->resize(u4Count);
    return NyCfgListIds(NyConfigImage(), NyConfigImageLength(), pvIds->data(), &u4Count) == NY_OK;
}

}  // namespace

int UkeyCfgGet(const BlkUkeyCfgArgsTag& args) {
    CUkeyCfgImage image(args.u4Language);
    if (image.Get() == nullptr) {
        return UKEY_CFG_EXIT_FAILED;
    }
    std::string strValue;
    uint32_t u4Result = UkeyCfgReadValue(image.Get(), args.u4Id, args.bRaw, &strValue);
    if (u4Result != NY_OK) {
        fprintf(stderr, "ukey-cfg: %s\n", UkeyCfgDescribeFailure(args.u4Id, u4Result).c_str());
        return UKEY_CFG_EXIT_FAILED;
    }
    printf("%s\n", strValue.c_str());
    return UKEY_CFG_EXIT_OK;
}

int UkeyCfgList(const BlkUkeyCfgArgsTag& args) {
    CUkeyCfgImage image(args.u4Language);
    std::vector<uint32_t> vIds;
    if (image.Get() == nullptr || !UkeyCfgListImageIds(&vIds)) {
        return UKEY_CFG_EXIT_FAILED;
    }
    int iExit = UKEY_CFG_EXIT_OK;
    for (uint32_t u4Id : vIds) {
        std::string strValue;
        uint32_t u4Result = UkeyCfgReadValue(image.Get(), u4Id, false, &strValue);
        if (u4Result != NY_OK) {
            strValue = "(" + UkeyCfgDescribeFailure(u4Id, u4Result) + ")";
            iExit = UKEY_CFG_EXIT_FAILED;
        }
        printf("0x%08X\t%s\t%s\n", u4Id, UkeyCfgTypeName(NyCfgIdType(u4Id)).c_str(),
               UkeyCfgEscape(strValue).c_str());
    }
    return iExit;
}

int UkeyCfgInfo() {
    std::vector<uint32_t> vIds;
    if (!UkeyCfgListImageIds(&vIds)) {
        fprintf(stderr, "ukey-cfg: the built-in configuration image is malformed\n");
        return UKEY_CFG_EXIT_FAILED;
    }
    std::map<uint32_t, std::map<uint32_t, int>> mCounts;
    for (uint32_t u4Id : vIds) {
        ++mCounts[NyCfgIdGroup(u4Id)][NyCfgIdType(u4Id)];
    }
    printf("image: %u bytes, %zu entries\n", NyConfigImageLength(), vIds.size());
    for (const auto& group : mCounts) {
        std::string strLine;
        // Texts first, then numbers by width, then raw values.
        for (uint32_t u4Type :
             {1u, 2u, 3u, 4u, 0u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 13u, 14u, 15u}) {
            auto it = group.second.find(u4Type);
            if (it != group.second.end()) {
                strLine += (strLine.empty() ? "" : ", ") + std::to_string(it->second) + " " +
                           UkeyCfgTypeName(u4Type);
            }
        }
        printf("group %u: %s\n", group.first, strLine.c_str());
    }
    return UKEY_CFG_EXIT_OK;
}
