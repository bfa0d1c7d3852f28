#ifndef LIBNOTE_SRC_FACTS_LAYERS_H
#define LIBNOTE_SRC_FACTS_LAYERS_H

// The five layers of a page: the name a file and a caller use for each, the page member
// that holds the site of its module, the flag that makes a page read take that member, and
// the line the picture call prints for a page without it. This is the one place the list
// is written down, for the library and for the programs built beside it. Header-only and
// never installed.

#include <string_view>

#include "kwpagefeaturemodule.h"

namespace noteformat {

struct Layer {
    const char* name;                      // the page key and the layer name callers pass
    int KwPageFeatureModule::*site;        // where a page keeps the layer module's site
    bool PageFeatureReadFlag::*readFlag;   // what makes a page read take that site
    const char* noDataText;                // printed when the page has no such layer
};

// Top first: a page is drawn from the last to the first.
constexpr Layer kLayers[] = {
    {"MAINLAYER", &KwPageFeatureModule::mainLayerSite, &PageFeatureReadFlag::mainLayer, "mainlayer have no data."},
    {"LAYER1", &KwPageFeatureModule::layer1Site, &PageFeatureReadFlag::layer1, "layer1 have no data."},
    {"LAYER2", &KwPageFeatureModule::layer2Site, &PageFeatureReadFlag::layer2, "layer2 have no data."},
    {"LAYER3", &KwPageFeatureModule::layer3Site, &PageFeatureReadFlag::layer3, "layer3 have no data."},
    {"BGLAYER", &KwPageFeatureModule::bgLayerSite, &PageFeatureReadFlag::bgLayer, "bglayer have no data."},
};

// The layer of that name, compared whole and case-sensitively; null for any other name.
constexpr const Layer* findLayer(std::string_view name) {
    for (const Layer& layer : kLayers)
        if (name == layer.name) return &layer;
    return nullptr;
}

// Flags that make a page read take every layer's site.
inline void selectAllLayers(PageFeatureReadFlag& flags) {
    for (const Layer& layer : kLayers) flags.*layer.readFlag = true;
}

}  // namespace noteformat

#endif
