// The built-in configuration image (texts and settings of the product), compiled in.
#pragma once

// A 4-byte big-endian length, then the image of that many bytes.
extern const unsigned char g_pu1ConfigProjHarbourline[];

// The image after its length prefix, and its length as the prefix states it.
const unsigned char* NyConfigImage();
unsigned int NyConfigImageLength();
