// How closely a traced page follows its picture: renders one page of a note with a notetool
// binary as a PNG (the picture) and as a traced PDF, rasterises the PDF with poppler's
// pdftoppm at 1x and 4x, and compares the renderings with the picture, scaled up without
// smoothing (a PNG at --scale 4).
//
// Usage: trace-fidelity NOTETOOL NOTE [PAGE] [-- OPTIONS...]
//   OPTIONS are notetool's, for the traced PDF (--vector where the PDF is a picture by
//   default; nothing for a notetool that traces by default).
//
// Prints a JSON object:
//   differing_share_1x: pixels that show another of the page's shades at 1x than the
//                       picture (their grey is nearer to another), a share of all
//   area_share_4x:      the area between rendering and picture at 4x (each pixel counted by
//                       its difference in grey, 255 a whole pixel) as a share of the ink
//                       (counted the same way against white)
//   mean_offset_4x_px:  that area over the length of the picture's edges (counted the same
//                       way), in source pixels: how far the outline lies from the pixels'
//                       edges on average; half a pixel is the target

#include <png.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Grey {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;
    int at(int x, int y) const { return pixels[std::size_t(y) * width + x]; }
};

Grey readPng(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) throw std::runtime_error(path + ": " + image.message);
    image.format = PNG_FORMAT_GRAY;
    Grey grey{int(image.width), int(image.height), std::vector<uint8_t>(PNG_IMAGE_SIZE(image))};
    png_color white{255, 255, 255};
    if (!png_image_finish_read(&image, &white, grey.pixels.data(), 0, nullptr)) throw std::runtime_error(path + ": " + image.message);
    return grey;
}

// pdftoppm -gray writes a binary PGM: "P5 width height 255" and the bytes.
Grey readPgm(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string magic;
    Grey grey;
    int most = 0;
    in >> magic >> grey.width >> grey.height >> most;
    in.get();
    if (magic != "P5" || most != 255) throw std::runtime_error(path + ": not an 8-bit PGM");
    grey.pixels.resize(std::size_t(grey.width) * grey.height);
    in.read(reinterpret_cast<char*>(grey.pixels.data()), std::streamsize(grey.pixels.size()));
    if (!in) throw std::runtime_error(path + ": cut short");
    return grey;
}

// The page's shades: ink, two greys, and white (white ink is a level darker than the paper,
// which outlines do not tell apart).
constexpr int kShades[] = {0x01, 0x9D, 0xC9, 0xFF};

// The shade a rendered grey is closest to: the colour a reader sees there.
int nearestShade(int grey) {
    int best = kShades[0];
    for (int shade : kShades)
        if (std::abs(grey - shade) < std::abs(grey - best)) best = shade;
    return best;
}

// Two greys' difference, where white ink and paper are the same.
int difference(int a, int b) {
    const int d = std::abs(a - b);
    return d <= 1 ? 0 : d;
}

void run(const std::string& command) {
    if (std::system((command + " > /dev/null").c_str()) != 0) throw std::runtime_error("failed: " + command);
}

std::string quoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: trace-fidelity NOTETOOL NOTE [PAGE] [-- OPTIONS...]\n");
        return 2;
    }
    const std::string notetool = quoted(argv[1]), note = quoted(argv[2]);
    int next = 3;
    std::string page = "1";
    if (next < argc && std::string(argv[next]) != "--") page = argv[next++];
    std::string options;
    if (next < argc && std::string(argv[next]) == "--")
        for (++next; next < argc; ++next) options += " " + quoted(argv[next]);

    const std::filesystem::path dir = std::filesystem::temp_directory_path() / ("trace-fidelity." + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    const auto path = [&](const char* name) { return (dir / name).string(); };
    try {
        // One point a pixel, so that pdftoppm's resolution is the zoom.
        const std::string render = notetool + " render " + note + " --pages " + page + " --dpi 72 ";
        run(render + "-o " + quoted(path("picture.png")));
        run(render + "--scale 4 -o " + quoted(path("picture4.png")));
        run(render + "--format pdf -o " + quoted(path("traced.pdf")) + options);
        run("pdftoppm -gray -r 72 " + quoted(path("traced.pdf")) + " " + quoted(path("one")));
        run("pdftoppm -gray -r 288 " + quoted(path("traced.pdf")) + " " + quoted(path("four")));
        const Grey picture = readPng(path("picture.png")), picture4 = readPng(path("picture4.png"));
        const Grey one = readPgm(path("one-1.pgm")), four = readPgm(path("four-1.pgm"));
        if (one.width != picture.width || one.height != picture.height || four.width != picture4.width ||
            four.height != picture4.height)
            throw std::runtime_error("the renderings are not the size of the picture");

        std::size_t differing = 0;
        for (std::size_t i = 0; i < picture.pixels.size(); ++i)
            differing += nearestShade(one.pixels[i]) != nearestShade(picture.pixels[i]);
        double between = 0, ink = 0;
        for (std::size_t i = 0; i < picture4.pixels.size(); ++i) {
            between += difference(four.pixels[i], picture4.pixels[i]) / 255.0;
            ink += (255 - picture4.pixels[i]) / 255.0;
        }
        double edges = 0;  // in source pixels
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) {
                if (x + 1 < picture.width) edges += std::abs(picture.at(x, y) - picture.at(x + 1, y)) / 255.0;
                if (y + 1 < picture.height) edges += std::abs(picture.at(x, y) - picture.at(x, y + 1)) / 255.0;
            }
        std::printf("{\"differing_share_1x\": %.6f, \"area_share_4x\": %.4f, \"mean_offset_4x_px\": %.4f}\n",
                    double(differing) / picture.pixels.size(), between / ink, between / 16 / edges);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "trace-fidelity: %s\n", e.what());
        std::filesystem::remove_all(dir);
        return 1;
    }
    std::filesystem::remove_all(dir);
    return 0;
}
