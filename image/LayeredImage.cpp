#include "LayeredImage.h"

LayeredImage::~LayeredImage()
{
    deleteLayers();
}

void LayeredImage::setLayer(const std::string& name, Image* image)
{
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) {
            layers[i] = image;
            return;
        }
    }
    names.push_back(name);
    layers.push_back(image);
}

Image* LayeredImage::layer(const std::string& name) const
{
    for (size_t i = 0; i < names.size(); ++i)
        if (names[i] == name)
            return layers[i];
    return nullptr;
}

void LayeredImage::clearPixels()
{
    for (Image* image : layers)
        if (image)
            image->clear();
}

void LayeredImage::copyTo(LayeredImage& destination) const
{
    if (destination.layers.size() != layers.size())
        return;
    for (size_t i = 0; i < layers.size(); ++i)
        if (layers[i] && destination.layers[i])
            layers[i]->copyTo(*destination.layers[i]);
}

void LayeredImage::deleteLayers()
{
    for (Image* image : layers)
        delete image;
    layers.clear();
    names.clear();
}

LayeredPixel LayeredImage::pixelAt(int32_t x, int32_t y) const
{
    LayeredPixel pixel;
    pixel.reserve(layers.size());
    for (const Image* image : layers)
        pixel.push_back(image->pixelAt(x, y).clone());
    return pixel;
}

void LayeredImage::sample(float x, float y, SampleMode mode, LayeredPixel& out) const
{
    for (size_t i = 0; i < layers.size() && i < out.size(); ++i)
        layers[i]->sample(x, y, mode, out[i]);
}

LayeredPixel LayeredImage::makeLayeredPixelLike(const LayeredPixel& other)
{
    LayeredPixel pixel;
    pixel.reserve(other.size());
    for (const Pixel& p : other)
        pixel.emplace_back(p.format);
    return pixel;
}

void LayeredImage::lerp(const LayeredPixel& a, const LayeredPixel& b, float t, LayeredPixel& out)
{
    for (size_t i = 0; i < a.size() && i < b.size() && i < out.size(); ++i)
        Pixel::lerp(a[i], b[i], t, out[i]);
}
