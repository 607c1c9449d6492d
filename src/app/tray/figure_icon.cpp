#include "app/tray/figure_icon.hpp"

#include <cairo.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <system_error>

namespace velmora {

namespace {

struct Colours {
    double fill[3];
    double ink[3];
};

Colours coloursOf(HeatColor color) {
    switch (color) {
        case HeatColor::yellow:
            return {{0.96, 0.69, 0.09}, {0.10, 0.10, 0.10}};
        case HeatColor::red:
            return {{0.80, 0.13, 0.13}, {1.0, 1.0, 1.0}};
        case HeatColor::label:
            break;
    }
    return {{0.18, 0.49, 0.20}, {1.0, 1.0, 1.0}};
}

std::string_view colourWord(HeatColor color) {
    switch (color) {
        case HeatColor::yellow:
            return "warm";
        case HeatColor::red:
            return "hot";
        case HeatColor::label:
            break;
    }
    return "normal";
}

void roundedSquare(cairo_t* cr, int size) {
    const double r = size / 5.0;
    const double s = size;
    cairo_new_sub_path(cr);
    cairo_arc(cr, s - r, r, r, -M_PI / 2, 0);
    cairo_arc(cr, s - r, s - r, r, 0, M_PI / 2);
    cairo_arc(cr, r, s - r, r, M_PI / 2, M_PI);
    cairo_arc(cr, r, r, r, M_PI, 3 * M_PI / 2);
    cairo_close_path(cr);
}

/// The largest bold text that fits the badge, placed on whole pixels so that it stays sharp.
void drawDigits(cairo_t* cr, std::string_view digits, int size, const double ink[3]) {
    const std::string text(digits);
    cairo_select_font_face(cr, "DejaVu Sans Condensed", CAIRO_FONT_SLANT_NORMAL,
                           CAIRO_FONT_WEIGHT_BOLD);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_FULL);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_ON);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_set_font_options(cr, options);
    cairo_font_options_destroy(options);
    const double room = size - std::max(2.0, size / 8.0);
    cairo_text_extents_t extents{};
    // Half-point steps down from the icon's size until the text fits.
    for (int halfPoints = 2 * size; halfPoints > 8; --halfPoints) {
        cairo_set_font_size(cr, halfPoints / 2.0);
        cairo_text_extents(cr, text.c_str(), &extents);
        if (extents.width <= room && extents.height <= size * 0.72) break;
    }
    const double x = std::round((size - extents.width) / 2 - extents.x_bearing);
    const double y = std::round((size - extents.height) / 2 - extents.y_bearing);
    cairo_set_source_rgb(cr, ink[0], ink[1], ink[2]);
    cairo_move_to(cr, x, y);
    cairo_show_text(cr, text.c_str());
}

cairo_surface_t* paint(std::string_view digits, HeatColor color, int size) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size);
    cairo_t* cr = cairo_create(surface);
    const auto colours = coloursOf(color);
    roundedSquare(cr, size);
    cairo_set_source_rgb(cr, colours.fill[0], colours.fill[1], colours.fill[2]);
    cairo_fill(cr);
    drawDigits(cr, digits, size, colours.ink);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    return surface;
}

}  // namespace

std::string figureDigits(std::optional<double> celsius) {
    if (!celsius || !std::isfinite(*celsius)) return "--";
    const long rounded = std::clamp(std::lround(*celsius), -99L, 999L);
    return std::to_string(rounded);
}

FigurePixmap drawFigureIcon(std::string_view digits, HeatColor color, int size) {
    cairo_surface_t* surface = paint(digits, color, size);
    FigurePixmap pixmap{size, size, {}};
    pixmap.argb.reserve(static_cast<std::size_t>(size) * static_cast<std::size_t>(size) * 4);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int row = 0; row < size; ++row) {
        const auto* line = reinterpret_cast<const std::uint32_t*>(data + row * stride);
        for (int column = 0; column < size; ++column) {
            const std::uint32_t pixel = line[column];
            const std::uint32_t alpha = pixel >> 24U;
            // Cairo keeps colours premultiplied; the item's pixmaps are straight.
            const auto straight = [alpha](std::uint32_t part) {
                return static_cast<std::uint8_t>(alpha == 0 ? 0 : (part * 255 + alpha / 2) / alpha);
            };
            pixmap.argb.push_back(static_cast<std::uint8_t>(alpha));
            pixmap.argb.push_back(straight((pixel >> 16U) & 0xffU));
            pixmap.argb.push_back(straight((pixel >> 8U) & 0xffU));
            pixmap.argb.push_back(straight(pixel & 0xffU));
        }
    }
    cairo_surface_destroy(surface);
    return pixmap;
}

std::string figureIconName(std::string_view digits, HeatColor color) {
    const std::string figure = digits == "--" ? std::string("none") : std::string(digits);
    return "org.velmora.heat-monitor-figure-" + figure + "-" + std::string(colourWord(color));
}

RuntimeIconDir::RuntimeIconDir(const std::filesystem::path& themeRoot) {
    const std::filesystem::path base =
        std::filesystem::path(g_get_user_runtime_dir()) / "velmora-heat-monitor";
    const auto folder = base / ("tray-" + std::to_string(getpid()));
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        problem_ = "cannot create " + folder.string() + ": " + error.message();
        return;
    }
    // Only the user reads them: the folder says what runs and how hot the machine is.
    ::chmod(base.c_str(), S_IRWXU);
    ::chmod(folder.c_str(), S_IRWXU);
    if (!themeRoot.empty() && std::filesystem::is_directory(themeRoot / "hicolor", error)) {
        std::filesystem::create_directory_symlink(themeRoot / "hicolor", folder / "hicolor", error);
    }
    path_ = folder;
}

RuntimeIconDir::~RuntimeIconDir() {
    if (path_.empty()) return;
    std::error_code error;
    std::filesystem::remove_all(path_, error);
    // The shared parent goes too once no other run uses it.
    std::filesystem::remove(path_.parent_path(), error);
}

bool RuntimeIconDir::ensurePng(std::string_view digits, HeatColor color) {
    if (path_.empty()) return false;
    const auto file = path_ / (figureIconName(digits, color) + ".png");
    std::error_code error;
    if (std::filesystem::exists(file, error)) return true;
    cairo_surface_t* surface = paint(digits, color, 24);
    const bool written = cairo_surface_write_to_png(surface, file.c_str()) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    return written;
}

}  // namespace velmora
