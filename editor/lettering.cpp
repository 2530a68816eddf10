#include "editor/lettering.h"

#include <memory>
#include <string_view>
#include <unordered_map>

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

struct Line {
    Owned<PangoLayout> layout;
    double width, baseline;
};

// All on the windows' one thread.
std::string fontFolder;
Owned<PangoContext> fonts;
std::unordered_map<std::string, Line> lines;
constexpr std::size_t mostLines = 2048;

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

// Letters stand as they are: the font would make an arrow of "->" and a sign of the x in "1200 x 660". A joiner of no width
// keeps them apart.
std::string drawnText(const std::string& text) {
    const std::string valid = validText(text);
    std::string result;
    for (std::size_t i = 0; i < valid.size(); ++i) {
        const bool isArrow = valid[i] == '>' && i > 0 && valid[i - 1] == '-';
        const bool isTimes = valid[i] == 'x' && i > 0 && i + 1 < valid.size() && valid[i - 1] == ' ' && valid[i + 1] == ' ';
        if (isArrow || isTimes) result += "\u2060";
        result += valid[i];
        if (isTimes) result += "\u2060";
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

Line layOut(const std::string& text, style::Face face, double size) {
    static constexpr const char* families[] = {"Inter", "Inter Medium", "Inter Semi Bold", "Sora SemiBold"};
    if (!fonts) fonts.reset(makeFonts());
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family_static(font, families[static_cast<int>(face)]);
    pango_font_description_set_absolute_size(font, pango_units_from_double(size));
    Line line{Owned<PangoLayout>(pango_layout_new(fonts.get())), 0, 0};
    pango_layout_set_font_description(line.layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_single_paragraph_mode(line.layout.get(), TRUE);
    const std::string drawn = drawnText(text);
    pango_layout_set_text(line.layout.get(), drawn.c_str(), -1);
    int width = 0;
    pango_layout_get_size(line.layout.get(), &width, nullptr);
    line.width = pango_units_to_double(width);
    line.baseline = pango_units_to_double(pango_layout_get_baseline(line.layout.get()));
    return line;
}

const Line& lineOf(const std::string& text, style::Face face, double size) {
    std::string key = text;
    key += static_cast<char>(face);
    key.append(reinterpret_cast<const char*>(&size), sizeof size);
    if (const auto known = lines.find(key); known != lines.end()) return known->second;
    if (lines.size() >= mostLines) lines.clear();
    return lines.emplace(std::move(key), layOut(text, face, size)).first->second;
}

}  // namespace

void useFontsOf(const std::string& folder) { fontFolder = folder; }

double width(const std::string& text, style::Face face, double size) { return text.empty() ? 0 : lineOf(text, face, size).width; }

void draw(VSTGUI::CDrawContext& context, double x, double y, const std::string& text, style::Face face, double size,
          const Color& color) {
    const auto* device = dynamic_cast<VSTGUI::CairoGraphicsDeviceContext*>(context.getPlatformDeviceContext().get());
    if (device == nullptr || text.empty()) return;
    const Line& line = lineOf(text, face, size);
    device->drawPangoLayout(line.layout.get(), {x, y - line.baseline}, color);
}

void forget() {
    lines.clear();
    fonts.reset();
}

}  // namespace vantoric::lettering
