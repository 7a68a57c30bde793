#include "Golden/GoldenAreas.h"
#include "QuillmereCore/DSP/MelFilterBank.h"

namespace quillmere::golden {
namespace {

MelFilterBank filterBank(const Json& input) {
    return {input.at("sampleRate").get<int>(), input.at("nFFT").get<int>(), input.at("nMels").get<int>()};
}

Outputs filters(const Case& vector) {
    const MelFilterBank bank = filterBank(vector.input);
    const Json rowIndex = vector.expect.value("rowIndex", Json::array());
    Json start = Json::array(), count = Json::array();
    std::vector<float> sums;
    for (const Json& index : rowIndex) {
        const std::span<const MelFilterBank::Row> rows = bank.rows();
        const auto m = index.get<std::size_t>();
        if (m >= rows.size()) throw std::out_of_range("there is no row " + std::to_string(m));
        start.push_back(rows[m].start);
        count.push_back(rows[m].weights.size());
        sums.push_back(rows[m].sum);
    }
    Outputs out;
    out.array("centers", bank.centers());
    out.array("binSum", bank.binSum());
    out.value("rowIndex", rowIndex);
    out.value("rowStart", start);
    out.value("rowCount", count);
    out.array("rowSum", sums);
    return out;
}

Outputs forward(const Case& vector) {
    const MelFilterBank bank = filterBank(vector.input);
    std::vector<float> mel(static_cast<std::size_t>(bank.nMels()));
    bank.forward(floats(vector.input.at("spectrum")), mel);
    Outputs out;
    out.array("mel", mel);
    return out;
}

Outputs inverse(const Case& vector) {
    const MelFilterBank bank = filterBank(vector.input);
    std::vector<float> spectrum(static_cast<std::size_t>(bank.bins()));
    bank.inverse(floats(vector.input.at("mel")), spectrum);
    Outputs out;
    out.array("spectrum", spectrum);
    return out;
}

}  // namespace

Area melArea() {
    return {"mel", {{"Mel", {{"filters", filters}, {"forward", forward}, {"inverse", inverse}}}}};
}

}  // namespace quillmere::golden
