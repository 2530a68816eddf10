#include "editor/lettering.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <cairo/cairo.h>
#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include "base/text.h"
#include "vstgui/lib/platform/linux/cairographicscontext.h"

namespace vantoric::lettering {
namespace {

struct Unref {
    template <class Object>
    void operator()(Object* object) const {
        g_object_unref(object);
    }
};
template <class Object>
using Owned = std::unique_ptr<Object, Unref>;

struct Release {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, Release>;

// How far the letters of a line cover the pixels at one zoom, and at one of the places within a pixel where it may begin.
struct Print {
    double scale = 0, place = 0;
    cairo_device_t* device = nullptr;  // on whose side it lies; none: in our own memory
    Surface coverage;
    int left = 0, top = 0, width = 0, height = 0;  // from the pixel where the line begins, on its base line
    std::size_t bytes() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
};

struct Line {
    Owned<PangoLayout> layout;
    double width, baseline;
    bool isOutlined;  // no letter is a picture with colours of its own
    std::vector<Print> prints;
};

// All on the windows' one thread.
std::string fontFolder;
Owned<PangoContext> fonts;
std::unordered_map<std::string, Line> lines;
constexpr std::size_t mostLines = 2048;
std::size_t printedBytes = 0;
constexpr std::size_t mostPrintedBytes = 6 << 20;

void forgetLines() {
    lines.clear();
    printedBytes = 0;
}

// The text renderer takes nothing but UTF-8, and names of files may hold any byte.
std::string validText(const std::string& text) {
    std::string result;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t bytes = characterBytes(rest);
        if (bytes == 1 && static_cast<unsigned char>(rest[0]) >= 0x80) {
            result += "\ufffd";
        } else {
            result += rest.substr(0, bytes);
        }
        rest.remove_prefix(bytes);
    }
    return result;
}

// Letters stand where the font wants them, not on whole units: words keep their gaps at every zoom, and a width measured at
// one zoom holds at all of them. Grey edges, so that text is the same on a kept picture and on the screen.
PangoContext* makeFonts() {
    const Owned<PangoFontMap> map(pango_cairo_font_map_new());
    if (FcConfig* config = FcInitLoadConfigAndFonts()) {
        FcConfigAppFontAddDir(config, reinterpret_cast<const FcChar8*>(fontFolder.c_str()));
        pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map.get()), config);
        FcConfigDestroy(config);
    }
    PangoContext* context = pango_font_map_create_context(map.get());
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_SLIGHT);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(context, FALSE);
    return context;
}

struct UnrefAttributes {
    void operator()(PangoAttrList* list) const { pango_attr_list_unref(list); }
};
using Attributes = std::unique_ptr<PangoAttrList, UnrefAttributes>;

// Every letter stands as it was written: left to itself the font makes an arrow of "->" or "<=" and a sign of the x in
// "2 x 3".
Attributes asWritten() {
    Attributes attributes(pango_attr_list_new());
    pango_attr_list_insert(attributes.get(), pango_attr_font_features_new("calt=0, liga=0, clig=0, dlig=0"));
    return attributes;
}

bool isOutlined(PangoLayout* layout) {
    const std::unique_ptr<PangoLayoutIter, decltype(&pango_layout_iter_free)> iterator(pango_layout_get_iter(layout),
                                                                                       pango_layout_iter_free);
    do {
        const PangoLayoutRun* run = pango_layout_iter_get_run_readonly(iterator.get());
        if (run == nullptr) continue;  // a line's end
        if (!PANGO_IS_FC_FONT(run->item->analysis.font)) return false;
        FcPattern* font = pango_fc_font_get_pattern(PANGO_FC_FONT(run->item->analysis.font));
        FcBool hasOutlines = FcTrue, hasColors = FcFalse;
        FcPatternGetBool(font, FC_OUTLINE, 0, &hasOutlines);
        FcPatternGetBool(font, FC_COLOR, 0, &hasColors);
        if (hasOutlines == FcFalse || hasColors != FcFalse) return false;
    } while (pango_layout_iter_next_run(iterator.get()) != FALSE);
    return true;
}

Line layOut(const std::string& text, style::Face face, double size) {
    static constexpr const char* families[] = {"Inter", "Inter Medium", "Inter Semi Bold", "Sora SemiBold"};
    if (!fonts) fonts.reset(makeFonts());
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family_static(font, families[static_cast<int>(face)]);
    pango_font_description_set_absolute_size(font, pango_units_from_double(size));
    Line line{Owned<PangoLayout>(pango_layout_new(fonts.get())), 0, 0, false, {}};
    pango_layout_set_font_description(line.layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_single_paragraph_mode(line.layout.get(), TRUE);
    const std::string drawn = validText(text);
    pango_layout_set_text(line.layout.get(), drawn.c_str(), -1);
    pango_layout_set_attributes(line.layout.get(), asWritten().get());
    int width = 0;
    pango_layout_get_size(line.layout.get(), &width, nullptr);
    line.width = pango_units_to_double(width);
    line.baseline = pango_units_to_double(pango_layout_get_baseline(line.layout.get()));
    line.isOutlined = isOutlined(line.layout.get());
    return line;
}

Line& lineOf(const std::string& text, style::Face face, double size) {
    if (lines.size() >= mostLines || printedBytes > mostPrintedBytes) forgetLines();
    std::string key = text;
    key += static_cast<char>(face);
    key.append(reinterpret_cast<const char*>(&size), sizeof size);
    if (const auto known = lines.find(key); known != lines.end()) return known->second;
    return lines.emplace(std::move(key), layOut(text, face, size)).first->second;
}

// The letters' outlines are filled here: as letters of a font each of them would be moved to a whole pixel (by cairo before
// 1.17.4), which at a small zoom tears words apart.
Print printed(const Line& line, double scale, double place, cairo_surface_t* target) {
    Print print;
    print.scale = scale;
    print.place = place;
    PangoRectangle ink;
    pango_layout_get_extents(line.layout.get(), &ink, nullptr);
    const double left = pango_units_to_double(ink.x) * scale + place;
    const double top = (pango_units_to_double(ink.y) - line.baseline) * scale;
    constexpr int margin = 2;  // hinting may move an edge by a pixel
    print.left = static_cast<int>(std::floor(left)) - margin;
    print.top = static_cast<int>(std::floor(top)) - margin;
    print.width = static_cast<int>(std::ceil(left + pango_units_to_double(ink.width) * scale)) + margin - print.left;
    print.height = static_cast<int>(std::ceil(top + pango_units_to_double(ink.height) * scale)) + margin - print.top;
    constexpr int widest = 16384;
    if (print.width > widest || print.height > widest) return print;
    Surface letters(cairo_image_surface_create(CAIRO_FORMAT_A8, print.width, print.height));
    const std::unique_ptr<cairo_t, Release> context(cairo_create(letters.get()));
    cairo_translate(context.get(), place - print.left, -print.top);
    cairo_scale(context.get(), scale, scale);
    cairo_move_to(context.get(), 0, -line.baseline);
    pango_cairo_layout_path(context.get(), line.layout.get());
    cairo_fill(context.get());
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) return print;
    print.device = cairo_surface_get_device(target);
    if (print.device == nullptr) {
        print.coverage = std::move(letters);
        return print;
    }
    // Sent once to where it is drawn.
    Surface sent(cairo_surface_create_similar(target, CAIRO_CONTENT_ALPHA, print.width, print.height));
    const std::unique_ptr<cairo_t, Release> sender(cairo_create(sent.get()));
    cairo_set_operator(sender.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(sender.get(), letters.get(), 0, 0);
    cairo_paint(sender.get());
    if (cairo_status(sender.get()) == CAIRO_STATUS_SUCCESS) print.coverage = std::move(sent);
    return print;
}

const Print& printOf(Line& line, double scale, double place, cairo_surface_t* target) {
    const auto known = std::find_if(line.prints.begin(), line.prints.end(), [&](const Print& print) {
        return print.scale == scale && print.place == place && print.device == cairo_surface_get_device(target);
    });
    if (known != line.prints.end()) return *known;
    const Print& print = line.prints.emplace_back(printed(line, scale, place, target));
    printedBytes += print.bytes();
    return print;
}

// False if it cannot be: the line is too long, lies askew, or there is no memory for it.
bool drawPrint(cairo_t* context, Line& line, double x, double y) {
    constexpr int places = 4;  // within a pixel
    cairo_matrix_t matrix;
    cairo_get_matrix(context, &matrix);
    if (!line.isOutlined || matrix.xx != matrix.yy || matrix.xy != 0 || matrix.yx != 0) return false;
    cairo_user_to_device(context, &x, &y);
    const double begin = std::round(x * places) / places, pixel = std::floor(begin);
    const Print& print = printOf(line, matrix.xx, begin - pixel, cairo_get_target(context));
    if (!print.coverage) return false;
    cairo_identity_matrix(context);
    cairo_mask_surface(context, print.coverage.get(), pixel + print.left, std::round(y) + print.top);
    return true;
}

// The window library keeps its drawing context to itself, but it draws lines that were laid out: one of a single shape, which
// we draw, brings the context here.
Owned<PangoLayout> carrier;
struct {
    Line* line;
    double x, y;
} carried;

void drawCarried(cairo_t* context, PangoAttrShape* /*shape*/, gboolean /*asPath*/, gpointer /*data*/) {
    Line& line = *carried.line;
    if (drawPrint(context, line, carried.x, carried.y)) return;
    cairo_move_to(context, carried.x, carried.y - line.baseline);
    pango_cairo_show_layout(context, line.layout.get());
}

PangoLayout* makeCarrier() {
    PangoLayout* layout = pango_layout_new(fonts.get());
    pango_layout_set_text(layout, "\ufffc", -1);
    PangoAttrList* attributes = pango_attr_list_new();
    const PangoRectangle place{0, 0, 0, 0};
    pango_attr_list_insert(attributes, pango_attr_shape_new(&place, &place));
    pango_layout_set_attributes(layout, attributes);
    pango_attr_list_unref(attributes);
    pango_cairo_context_set_shape_renderer(fonts.get(), drawCarried, nullptr, nullptr);
    return layout;
}

}  // namespace

void useFontsOf(const std::string& folder) { fontFolder = folder; }

double width(const std::string& text, style::Face face, double size) { return text.empty() ? 0 : lineOf(text, face, size).width; }

void draw(VSTGUI::CDrawContext& context, double x, double y, const std::string& text, style::Face face, double size,
          const Color& color) {
    const auto* device = dynamic_cast<VSTGUI::CairoGraphicsDeviceContext*>(context.getPlatformDeviceContext().get());
    if (device == nullptr || text.empty()) return;
    carried = {&lineOf(text, face, size), x, y};
    if (!carrier) carrier.reset(makeCarrier());
    device->drawPangoLayout(carrier.get(), {x, y}, color);
}

void forget() {
    forgetLines();
    carrier.reset();
    fonts.reset();
}

}  // namespace vantoric::lettering
