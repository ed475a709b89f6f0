#include <fmt/ranges.h>
#include <lcms2.h>

#include "pictures.h"

namespace tkv::test::profiles {

/// Files of ICC profiles, all of which say that they are sRGB: "grey" and "linear" have no gamma
/// (half the light is 188 in sRGB), "swapped" takes red for blue, "inks" shows cyan alone, as
/// black. "long" is a linear one of more than four megabytes, "elements" has a chain of processing
/// elements, none of which is bounded.
struct Profiles {
    Profiles() {
        cmsToneCurve* const line = cmsBuildGamma(nullptr, 1);
        cmsToneCurve* const lines[] = {line, line, line};
        const cmsCIExyY daylight{0.3127, 0.329, 1};
        const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1}, {0.3, 0.6, 1}, {0.15, 0.06, 1}};
        save(cmsCreateGrayProfile(cmsD50_xyY(), line), "grey");
        save(cmsCreateRGBProfile(&daylight, &primaries, lines), "linear");
        folder.write("long", readText(folder.file("linear")) + std::string(1U << 22U, '\0'));
        const cmsHPROFILE elements = cmsCreateRGBProfile(&daylight, &primaries, lines);
        cmsPipeline* const chain = cmsPipelineAlloc(nullptr, 3, 3);
        constexpr double kMatrix[] = {1, 0, 0, 0, 1, 0, 0, 0, 1}, kOffset[] = {0, 0, 0};
        cmsPipelineInsertStage(chain, cmsAT_END,
                               cmsStageAllocMatrix(nullptr, 3, 3, kMatrix, kOffset));
        cmsWriteTag(elements, cmsSigDToB0Tag, chain);
        cmsPipelineFree(chain);
        save(elements, "elements");
        cmsFreeToneCurve(line);
        save(cmsCreate_sRGBProfile(), "swapped");
        std::string bytes = readText(folder.file("swapped"));
        std::swap(bytes[bytes.find("rXYZ")], bytes[bytes.find("bXYZ")]);
        folder.write("swapped", bytes);

        cmsUInt16Number lab[16][3];
        for (int i = 0; i < 16; ++i) {
            lab[i][0] = i < 8 ? 0xFFFF : 0;
            lab[i][1] = lab[i][2] = 0x8080;
        }
        cmsPipeline* const toLab = cmsPipelineAlloc(nullptr, 4, 3);
        cmsPipelineInsertStage(toLab, cmsAT_END, cmsStageAllocCLut16bit(nullptr, 2, 4, 3, lab[0]));
        const cmsHPROFILE inks = cmsCreateProfilePlaceholder(nullptr);
        cmsSetDeviceClass(inks, cmsSigOutputClass);
        cmsSetColorSpace(inks, cmsSigCmykData);
        cmsSetPCS(inks, cmsSigLabData);
        cmsWriteTag(inks, cmsSigAToB0Tag, toLab);
        cmsPipelineFree(toLab);
        save(inks, "inks");
    }

    void save(cmsHPROFILE profile, const std::string& name) const {
        cmsMLU* const srgb = cmsMLUalloc(nullptr, 1);
        cmsMLUsetASCII(srgb, cmsNoLanguage, cmsNoCountry, "sRGB");
        cmsWriteTag(profile, cmsSigProfileDescriptionTag, srgb);
        cmsMLUfree(srgb);
        cmsSaveProfileToFile(profile, folder.file(name).c_str());
        cmsCloseProfile(profile);
    }

    /// The files as they are shown with that profile embedded.
    std::vector<Bitmap> shown(const Strings& files, const std::string& profile) const {
        const TempFolder copies;
        run(fmt::format("cd {} && exiftool -q '-ICC_Profile<={}' -o {}/ {}", folder.path(), profile,
                        copies.path(), fmt::join(files, " ")));
        std::vector<Bitmap> bitmaps;
        for (const std::string& file : files)
            bitmaps.push_back(decodePicture(copies.file(file)).value());
        return bitmaps;
    }

    TempFolder folder;
};

TEST(DecodePicture, ConvertsFromProfilesOfItsOwnKind) {
    const Profiles profiles;
    const std::string make = magick() + "-size 8x8 -depth 8 -quality 99 'xc:rgb(";
    run("cd " + profiles.folder.path() + "; for type in jpg tif png jp2; do " + make +
        "128,128,132)' c.$type; " + make +
        "128,128,128)' -colorspace Gray g.$type; done; for i in "
        "i.jpg i.tif '-interlace plane CMYK:i.raw'; do " +
        make +
        "255,128,0)' -colorspace CMYK $i; done; exiftool -q -Adobe:all= -o bare.jpg i.jpg; "
        "opj_compress -n 3 -mct 0 -i i.raw -F 8,8,4,8,u -o i.jp2");
    constexpr Rgba kHalf{128, 128, 130, 255}, kLighter{188, 188, 190, 255},
        kWhole{255, 128, 0, 255};
    const std::tuple<const char*, Strings, Rgba> rows[] = {
        {"linear", {"c.jpg", "c.tif", "c.png", "c.jp2"}, kLighter},
        {"linear", {"g.jpg", "g.tif", "g.jp2"}, kHalf},
        {"long", {"c.jpg", "c.tif"}, kHalf},
        {"elements", {"c.jpg", "c.tif"}, kHalf},
        {"grey", {"g.jpg", "g.tif", "g.png", "g.jp2"}, kLighter},
        {"grey", {"c.jpg", "c.tif", "c.jp2"}, kHalf},
        {"grey", {"i.jpg", "i.tif"}, kWhole},
        {"inks", {"i.jpg", "i.jp2"}, {255, 255, 255, 255}},
        {"inks", {"bare.jpg"}, {143, 143, 143, 255}},
        {"inks", {"c.jpg", "g.jpg", "c.jp2"}, kHalf},
    };
    for (const auto& [profile, files, expected] : rows) {
        for (const Bitmap& bitmap : profiles.shown(files, profile))
            EXPECT_TRUE(near(pixel(bitmap, 4, 4), expected, 4)) << profile;
    }
    const Bitmap bitmap = quarters({32, 32}), faint = quarters({32, 32}, 128);
    Strings files;
    for (const auto& file : {encodeJpeg(bitmap, 1.0F), encodePng(bitmap), encodeTiff(bitmap),
                             encodeJpeg2000(bitmap), encodePng(faint)}) {
        files.push_back(std::to_string(files.size()));
        profiles.folder.write(files.back(), text(file));
    }
    for (const Bitmap& shown : profiles.shown(files, "swapped"))
        EXPECT_EQ(corners(shown), "BGRW");
}

/// The size of the box whose type stands at `at`, made larger by that.
std::size_t grown(std::string& file, std::size_t at, std::size_t by) {
    std::size_t size = 0;
    for (std::size_t i = 4; i > 0; --i)
        size = size << 8U | static_cast<std::uint8_t>(file[at - i]);
    for (std::size_t i = 1; i <= 4; ++i)
        file[at - i] = static_cast<char>((size + by) >> 8 * (i - 1));
    return size;
}

/// An AVIF file with another "colr" box and a first box that is longer by that. The boxes that
/// describe the picture move to the end, so that its data stay where they are.
std::string withColors(std::string file, const std::string& colors, std::size_t longer) {
    const std::size_t at = file.find("meta");
    std::string meta = file.substr(at - 4, grown(file, at, 0));
    grown(file, at, 0U - longer);
    file.replace(at, 4, "free").erase(at + 4, longer);
    file.insert(grown(file, 4, longer), longer, 'm');
    const std::size_t place = meta.find("colr"), size = grown(meta, place, 0);
    for (const char* box : {"meta", "iprp", "ipco", "colr"})
        grown(meta, meta.find(box), colors.size() + 8 - size);
    return file + meta.replace(place + 4, size - 8, colors);
}

TEST(DecodePicture, ConvertsFromWhatAvifStates) {
    const Profiles profiles;
    const std::string linear = readText(profiles.folder.file("linear"));
    const std::string png =
        profiles.folder.write("a.png", text(encodePng(painted({64, 64}, {120, 110, 100, 255}))));
    const std::string avif = profiles.folder.file("a.avif");
    // Not every ImageMagick states the colours.
    run("ffmpeg -nostdin -v error -i " + png + " -vf scale=out_color_matrix=bt601:out_range=pc," +
        "format=yuv444p -c:v libaom-av1 -cpu-used 6 -crf 2 -still-picture 1 " + avif);
    const std::string file = readText(avif);
    const auto codes = [](char primaries, char transfer) {
        return "nclx" + std::string({'\0', primaries, '\0', transfer, '\0', 6, '\x80'});
    };
    const std::pair<std::string, Rgba> rows[] = {
        {"prof" + linear, {182, 175, 168, 255}}, {"rICC" + linear, {182, 175, 168, 255}},
        {"prof of none", {120, 110, 100, 255}},  {codes(1, 1), {120, 110, 100, 255}},
        {codes(12, 13), {122, 110, 99, 255}},    {codes(9, 14), {127, 109, 99, 255}},
        {codes(2, 8), {182, 175, 168, 255}},     {codes(9, 16), {170, 128, 103, 255}},
        {codes(9, 18), {136, 115, 103, 255}},
    };
    for (const auto& [colors, expected] : rows) {
        // Where HEIF's reader is installed, too, it depends on this length which one reads.
        for (const std::size_t longer : {0U, 4U}) {
            const auto shown =
                decodePicture(profiles.folder.write("c", withColors(file, colors, longer)));
            ASSERT_TRUE(shown) << longer;
            EXPECT_TRUE(near(pixel(*shown, 32, 32), expected, 4)) << colors.substr(0, 11);
        }
    }
}

}  // namespace tkv::test::profiles
