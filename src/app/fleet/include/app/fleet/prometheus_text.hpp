#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

/// A label value as the Prometheus text format needs it: backslash, double quote and line
/// feed escaped.
std::string escapeLabelValue(std::string_view value);

/// Writes metric families in the Prometheus text exposition format: one HELP and TYPE header per
/// family, then its samples; a family with no sample is left out. Families are written one after
/// the other, never interleaved.
class PrometheusText {
  public:
    using Labels = std::vector<std::pair<std::string, std::string>>;

    void family(std::string_view name, std::string_view type, std::string_view help);
    /// A sample of the family last started; nothing is written for an absent value.
    void sample(std::optional<double> value, const Labels& labels = {});

    const std::string& text() const { return text_; }

  private:
    std::string text_;
    std::string name_;
    std::string header_;
};

}  // namespace velmora
