#include "app/icon/app_icon.hpp"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <system_error>

namespace velmora {

namespace {

struct Point {
    double x;
    double y;
};

struct Colour {
    double r;
    double g;
    double b;
};

constexpr Colour amber{0.98, 0.66, 0.14};
constexpr Colour red{0.86, 0.17, 0.15};
constexpr Colour white{1, 1, 1};
constexpr Colour mercury{0.80, 0.09, 0.10};

double length(Point p) {
    return std::hypot(p.x, p.y);
}

// Signed distances in icon units (the icon is 1 wide): negative inside, positive outside.
double roundedSquare(Point p, double half, double radius) {
    const Point q{std::abs(p.x - 0.5) - (half - radius), std::abs(p.y - 0.5) - (half - radius)};
    const Point outside{std::max(q.x, 0.0), std::max(q.y, 0.0)};
    return length(outside) + std::min(std::max(q.x, q.y), 0.0) - radius;
}

double capsule(Point p, Point a, Point b, double radius) {
    const Point pa{p.x - a.x, p.y - a.y};
    const Point ba{b.x - a.x, b.y - a.y};
    const double h =
        std::clamp((pa.x * ba.x + pa.y * ba.y) / (ba.x * ba.x + ba.y * ba.y), 0.0, 1.0);
    return length(Point{pa.x - ba.x * h, pa.y - ba.y * h}) - radius;
}

double circle(Point p, Point centre, double radius) {
    return length(Point{p.x - centre.x, p.y - centre.y}) - radius;
}

/// How much of a pixel a shape covers, from its distance in pixels: a one-pixel soft edge.
double coverage(double distance, double pixels) {
    return std::clamp(0.5 - distance * pixels, 0.0, 1.0);
}

Colour mix(Colour under, Colour over, double amount) {
    return Colour{under.r + (over.r - under.r) * amount, under.g + (over.g - under.g) * amount,
                  under.b + (over.b - under.b) * amount};
}

std::uint8_t channel(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
}

/// The icon at one point of the unit square: its colour and its opacity.
std::pair<Colour, double> shade(Point p, double pixels) {
    // The body follows the Mac's icon grid: 824 of 1024 wide, corners of 185.
    const double body = coverage(roundedSquare(p, 0.4023, 0.1807), pixels);
    Colour colour = mix(amber, red, std::clamp((p.y - 0.1) / 0.8, 0.0, 1.0));
    const double glass =
        std::min(capsule(p, {0.5, 0.24}, {0.5, 0.64}, 0.075), circle(p, {0.5, 0.70}, 0.125));
    colour = mix(colour, white, coverage(glass, pixels));
    const double fill =
        std::min(capsule(p, {0.5, 0.42}, {0.5, 0.66}, 0.036), circle(p, {0.5, 0.70}, 0.085));
    colour = mix(colour, mercury, coverage(fill, pixels));
    return {colour, body};
}

}  // namespace

RgbaImage drawAppIcon(std::uint32_t size) {
    RgbaImage image(size, size);
    const double pixels = size;
    for (std::uint32_t y = 0; y < size; ++y) {
        for (std::uint32_t x = 0; x < size; ++x) {
            const Point centre{(x + 0.5) / pixels, (y + 0.5) / pixels};
            const auto [colour, alpha] = shade(centre, pixels);
            auto* out = image.at(x, y);
            out[0] = channel(colour.r);
            out[1] = channel(colour.g);
            out[2] = channel(colour.b);
            out[3] = channel(alpha);
        }
    }
    return image;
}

std::vector<IconSetEntry> iconSetEntries() {
    std::vector<IconSetEntry> entries;
    for (const std::uint32_t points : {16U, 32U, 128U, 256U, 512U}) {
        const auto name = "icon_" + std::to_string(points) + "x" + std::to_string(points);
        entries.push_back({name + ".png", points});
        entries.push_back({name + "@2x.png", points * 2});
    }
    return entries;
}

std::optional<std::string> writeIconSet(const std::filesystem::path& dir) {
    std::error_code error;
    std::filesystem::create_directories(dir, error);
    if (error) return "cannot create " + dir.string() + ": " + error.message();
    for (const auto& entry : iconSetEntries()) {
        const auto png = encodePng(drawAppIcon(entry.pixels));
        const auto file = dir / entry.fileName;
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(png.data()),
                  static_cast<std::streamsize>(png.size()));
        out.close();
        if (!out) return "cannot write " + file.string();
    }
    return std::nullopt;
}

}  // namespace velmora
