#include "player/channel_type.h"

namespace player {
namespace {

struct ChannelType {
  BASS_DWORD code;
  std::string_view name;
};

constexpr ChannelType kChannelTypes[] = {
    {0x10000, "Custom"}, {0x10001, "Wave"},     {0x10002, "Ogg"},       {0x10003, "MP1"},
    {0x10004, "MP2"},    {0x10005, "MP3"},      {0x10006, "AIFF"},      {0x10200, "CDA"},
    {0x10300, "WMA"},    {0x10500, "WavPack"},  {0x10600, "OptimFROG"}, {0x10700, "Monkey's Audio"},
    {0x10900, "FLAC"},   {0x10a00, "Musepack"}, {0x10b00, "AAC"},       {0x10b01, "MP4"},
    {0x10c00, "Speex"},  {0x10e00, "ALAC"},     {0x10f00, "TTA"},       {0x11000, "AC3"},
    {0x11d00, "DTA"},    {0x20000, "MOD"},      {0x20001, "MTM"},       {0x20002, "S3M"},
    {0x20003, "XM"},     {0x20004, "IT"},       {0x20005, "MO3"},
};

}  // namespace

std::string_view GetCTypeName(BASS_DWORD ctype) {
  for (const ChannelType& type : kChannelTypes)
    if (type.code == ctype) return type.name;
  return "Unknown";
}

}  // namespace player
