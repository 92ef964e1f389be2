#include "host/text_library/PangoDrawer.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>

namespace Corvel {
namespace {

template <typename T>
struct Release;
template <>
struct Release<PangoLayout> {
    void operator()(PangoLayout* layout) const { g_object_unref(layout); }
};
template <>
struct Release<PangoFont> {
    void operator()(PangoFont* font) const { g_object_unref(font); }
};
template <>
struct Release<PangoContext> {
    void operator()(PangoContext* context) const { g_object_unref(context); }
};
template <>
struct Release<PangoFontMap> {
    void operator()(PangoFontMap* map) const { g_object_unref(map); }
};
template <>
struct Release<PangoFontDescription> {
    void operator()(PangoFontDescription* description) const { pango_font_description_free(description); }
};
template <>
struct Release<PangoLayoutIter> {
    void operator()(PangoLayoutIter* position) const { pango_layout_iter_free(position); }
};
template <>
struct Release<cairo_surface_t> {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
template <>
struct Release<cairo_t> {
    void operator()(cairo_t* cairo) const { cairo_destroy(cairo); }
};
template <typename T>
using Owned = std::unique_ptr<T, Release<T>>;

std::string oneLine(const std::string& text) {
    char* const valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    std::string line = valid;
    g_free(valid);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
    return line;
}

std::string familyOf(PangoFont* font) {
    const Owned<PangoFontDescription> description(pango_font_describe(font));
    const char* const family = pango_font_description_get_family(description.get());
    return family ? family : "";
}

bool isAmong(const std::string& families, const std::string& family) {
    std::string_view rest = families;
    while (!rest.empty()) {
        std::string_view name = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
        if (name.size() == family.size() &&
            g_ascii_strncasecmp(name.data(), family.data(), name.size()) == 0) {
            return true;
        }
    }
    return false;
}

// Once each, but for blanks and what only joins letters.
void addLetter(std::string& letters, const char* at) {
    const gunichar letter = g_utf8_get_char(at);
    const std::string text(at, static_cast<std::size_t>(g_utf8_next_char(at) - at));
    if (g_unichar_isgraph(letter) && letters.find(text) == std::string::npos) {
        letters += text;
    }
}

class PangoDrawer : public TextDrawer {
public:
    // A font map of its own: those of Pango are for one thread.
    PangoDrawer()
        : fonts(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT)),
          context(pango_font_map_create_context(fonts.get())) {
        // Resolution 72: sizes are pixels. Grey edges and no hinting: letters look the same at every place.
        pango_cairo_context_set_resolution(context.get(), 72);
        cairo_font_options_t* const options = cairo_font_options_create();
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(context.get(), options);
        cairo_font_options_destroy(options);
    }

    DrawnText draw(const std::string& text, const TextStyle& style) override {
        DrawnText drawn;
        const std::string line = oneLine(text);
        if (line.empty()) {
            return drawn;
        }
        const Owned<PangoLayout> layout = layOut(line, style);
        findFaults(layout.get(), line, style, drawn);
        PangoRectangle logical{};
        pango_layout_get_extents(layout.get(), nullptr, &logical);
        Coverage& coverage = drawn.coverage;
        coverage.width = static_cast<int>(std::ceil(logical.width / style.pixelAspect / PANGO_SCALE)) + 1;
        coverage.height = static_cast<int>(std::ceil(static_cast<double>(logical.height) / PANGO_SCALE));
        paint(layout.get(), logical, style, coverage);
        return drawn;
    }

private:
    Owned<PangoLayout> layOut(const std::string& line, const TextStyle& style) {
        const Owned<PangoFontDescription> description(pango_font_description_new());
        pango_font_description_set_family(description.get(), style.family.c_str());
        pango_font_description_set_absolute_size(description.get(), style.size * PANGO_SCALE);
        pango_font_description_set_weight(description.get(),
                                          style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
        Owned<PangoLayout> layout(pango_layout_new(context.get()));
        pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
        pango_layout_set_font_description(layout.get(), description.get());
        pango_layout_set_text(layout.get(), line.data(), static_cast<int>(line.size()));
        if (style.widest > 0) {
            pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_MIDDLE);
            PangoRectangle natural{};
            pango_layout_get_extents(layout.get(), nullptr, &natural);
            const double widest = style.widest * style.pixelAspect * PANGO_SCALE;
            if (natural.width > widest) {
                pango_layout_set_width(layout.get(), static_cast<int>(widest));
            }
        }
        const Owned<PangoFont> font(pango_context_load_font(context.get(), description.get()));
        if (!font) {
            throw std::runtime_error("there is no font to write with; install fonts-dejavu-core");
        }
        base = familyOf(font.get());
        return layout;
    }

    void findFaults(PangoLayout* layout, const std::string& line, const TextStyle& style,
                    DrawnText& drawn) const {
        if (!isAmong(style.family, base)) {
            drawn.otherFamily = base;
        }
        const Owned<PangoLayoutIter> position(pango_layout_get_iter(layout));
        do {
            const PangoGlyphItem* const run = pango_layout_iter_get_run_readonly(position.get());
            if (!run) {
                continue;
            }
            const bool borrowed = familyOf(run->item->analysis.font) != base;
            for (int i = 0; i < run->glyphs->num_glyphs; ++i) {
                const int at = run->item->offset + run->glyphs->log_clusters[i];
                if ((run->glyphs->glyphs[i].glyph & PANGO_GLYPH_UNKNOWN_FLAG) != 0 &&
                    run->glyphs->glyphs[i].glyph != PANGO_GLYPH_EMPTY) {
                    addLetter(drawn.lacking, line.c_str() + at);
                } else if (borrowed) {
                    addLetter(drawn.borrowed, line.c_str() + at);
                }
            }
        } while (pango_layout_iter_next_run(position.get()));
    }

    static void paint(PangoLayout* layout, const PangoRectangle& logical, const TextStyle& style,
                      Coverage& coverage) {
        const int stride = cairo_format_stride_for_width(CAIRO_FORMAT_A8, coverage.width);
        std::vector<std::uint8_t> padded(static_cast<std::size_t>(stride) *
                                         static_cast<std::size_t>(coverage.height));
        const Owned<cairo_surface_t> surface(cairo_image_surface_create_for_data(
            padded.data(), CAIRO_FORMAT_A8, coverage.width, coverage.height, stride));
        const Owned<cairo_t> cairo(cairo_create(surface.get()));
        if (cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) {
            throw std::bad_alloc();
        }
        cairo_scale(cairo.get(), 1 / style.pixelAspect, 1);
        cairo_translate(cairo.get(), -static_cast<double>(logical.x) / PANGO_SCALE,
                        -static_cast<double>(logical.y) / PANGO_SCALE);
        pango_cairo_show_layout(cairo.get(), layout);
        cairo_surface_flush(surface.get());
        for (int y = 0; y < coverage.height; ++y) {
            const auto row = padded.begin() + std::ptrdiff_t{y} * stride;
            coverage.samples.insert(coverage.samples.end(), row, row + coverage.width);
        }
    }

    const Owned<PangoFontMap> fonts;
    const Owned<PangoContext> context;
    std::string base;  // family of the text's own font
};

}  // namespace

std::unique_ptr<TextDrawer> makePangoDrawer() {
    return std::make_unique<PangoDrawer>();
}

}  // namespace Corvel
