#include "window/picture.h"

#include <wincodec.h>

#include "base/com_win.h"
#include "window/gdi.h"
#include "window/window.h"

namespace window {
namespace {

struct Bytes {
  BYTE* data = nullptr;
  DWORD size = 0;
};

Bytes resourceBytes(int resource) {
  const HRSRC found = FindResourceW(instance(), MAKEINTRESOURCEW(resource), RT_RCDATA);
  if (found == nullptr) return {};
  const HGLOBAL loaded = LoadResource(instance(), found);
  return {static_cast<BYTE*>(LockResource(loaded)), SizeofResource(instance(), found)};
}

/// Which of the three sizes: never one that would have to grow, if there is a larger.
int variant(Dpi dpi) {
  if (dpi.value() <= 96) return 0;
  return dpi.value() <= 144 ? 1 : 2;
}

bool decode(const Bytes& bytes, SIZE pixels, BYTE* target, UINT target_bytes) {
  base::ComPointer<IWICImagingFactory> factory;
  if (FAILED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                              IID_IWICImagingFactory, factory.outVoid()))) {
    return false;
  }
  base::ComPointer<IWICStream> stream;
  base::ComPointer<IWICBitmapDecoder> decoder;
  base::ComPointer<IWICBitmapFrameDecode> frame;
  base::ComPointer<IWICFormatConverter> converter;
  base::ComPointer<IWICBitmapScaler> scaler;
  const auto width = static_cast<UINT>(pixels.cx);
  const auto height = static_cast<UINT>(pixels.cy);
  return SUCCEEDED(factory->CreateStream(stream.out())) &&
         SUCCEEDED(stream->InitializeFromMemory(bytes.data, bytes.size)) &&
         SUCCEEDED(factory->CreateDecoderFromStream(
             stream.get(), nullptr, WICDecodeMetadataCacheOnDemand, decoder.out())) &&
         SUCCEEDED(decoder->GetFrame(0, frame.out())) &&
         SUCCEEDED(factory->CreateFormatConverter(converter.out())) &&
         SUCCEEDED(converter->Initialize(frame.get(), GUID_WICPixelFormat32bppPBGRA,
                                         WICBitmapDitherTypeNone, nullptr, 0,
                                         WICBitmapPaletteTypeCustom)) &&
         SUCCEEDED(factory->CreateBitmapScaler(scaler.out())) &&
         SUCCEEDED(
             scaler->Initialize(converter.get(), width, height, WICBitmapInterpolationModeFant)) &&
         SUCCEEDED(scaler->CopyPixels(nullptr, width * 4, target_bytes, target));
}

}  // namespace

base::UniqueBitmap loadPicture(int resource, SIZE units, Dpi dpi) {
  const SIZE pixels{dpi.scale(units.cx), dpi.scale(units.cy)};
  const Bytes bytes = resourceBytes(resource + variant(dpi));
  if (bytes.data == nullptr || pixels.cx <= 0 || pixels.cy <= 0) return {};
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), pixels.cx, -pixels.cy, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  base::UniqueBitmap bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  if (!bitmap) return {};
  const base::ComScope com;
  const auto size = static_cast<UINT>(pixels.cx * pixels.cy * 4);
  if (!decode(bytes, pixels, static_cast<BYTE*>(bits), size)) return {};
  return bitmap;
}

void drawPicture(HDC dc, HBITMAP picture, int x, int y) {
  BITMAP shape{};
  if (GetObjectW(picture, sizeof(shape), &shape) == 0) return;
  const base::UniqueDc source(CreateCompatibleDC(dc));
  const SelectScope selected(source.get(), picture);
  const BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
  // Of gdi32, which is loaded in any case; msimg32's of the shorter name only calls it.
  GdiAlphaBlend(dc, x, y, shape.bmWidth, shape.bmHeight, source.get(), 0, 0, shape.bmWidth,
                shape.bmHeight, blend);
}

}  // namespace window
