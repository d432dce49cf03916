// The commands of ukey-cfg over the built-in image. Each returns the process exit code:
// 0 done, 1 the image could not be read or the entry not shown.
#pragma once

#include "UkeyCfgArgs.h"

constexpr int UKEY_CFG_EXIT_OK = 0;
constexpr int UKEY_CFG_EXIT_FAILED = 1;

int UkeyCfgGet(const BlkUkeyCfgArgsTag& args);
int UkeyCfgList(const BlkUkeyCfgArgsTag& args);
int UkeyCfgInfo();
