#pragma once

#include "Image.h"
#include "Pixel.h"

#include <string>
#include <vector>

// One Pixel per layer of a LayeredImage, in layer order.
using LayeredPixel = std::vector<Pixel>;

// Ordered, named layers that are synthesized together and stay in register.
// Owns its layers; `mask` is borrowed.
class LayeredImage
{
public:
    LayeredImage() = default;
    LayeredImage(const LayeredImage&) = delete;
    LayeredImage& operator=(const LayeredImage&) = delete;
    ~LayeredImage();

    // Replaces the pointer of the layer called `name` (the replaced image is
    // the caller's to free) or appends a new layer.
    void setLayer(const std::string& name, Image* image);
    size_t layerCount() const { return layers.size(); }
    // The layer called `name`, or null.
    Image* layer(const std::string& name) const;

    void clearPixels();
    // Copies layer i to layer i when the layer counts agree; layers of
    // different size or format are skipped.
    void copyTo(LayeredImage& destination) const;
    // Frees every layer and empties the lists.
    void deleteLayers();

    LayeredPixel pixelAt(int32_t x, int32_t y) const;
    void sample(float x, float y, SampleMode mode, LayeredPixel& out) const;
    static LayeredPixel makeLayeredPixelLike(const LayeredPixel& other);
    static void lerp(const LayeredPixel& a, const LayeredPixel& b, float t, LayeredPixel& out);

    std::vector<std::string> names;
    std::vector<Image*> layers;
    const Image* mask = nullptr;
    uint32_t maskChannel = 0;
};
