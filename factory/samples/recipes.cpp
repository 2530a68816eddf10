#include "factory/samples/recipes.h"

namespace vantoric::made {

const std::vector<Recipe>& recipes() {
    static const std::vector<Recipe> all = {
        {"Kick soft", [] { return Sample{kick(0.25)}; }},
        {"Kick hard", [] { return Sample{kick(0.9)}; }},
        {"Snare soft", [] { return Sample{snare(0.15)}; }},
        {"Snare hard", [] { return Sample{snare(0.9)}; }},
        {"Tom", [] { return Sample{tom(0.6)}; }},
        {"Hat closed", [] { return Sample{hat(false, 0.6)}; }},
        {"Hat open", [] { return Sample{hat(true, 0.8)}; }},
        {"Clap", [] { return Sample{clap(51)}; }},
        {"Stick", [] { return Sample{stick()}; }},
        {"Nylon soft", [] { return Sample{pluck({home, 0.22, 0.30, 3.2, 0.9, 0.5, 3}, 2.6)}; }},
        {"Nylon hard", [] { return Sample{pluck({home, 0.14, 0.62, 3.4, 0.8, 0.4, 3}, 2.6)}; }},
        {"Steel soft", [] { return Sample{pluck({home, 0.18, 0.50, 5.0, 0.30, 0.3, 5}, 3.0)}; }},
        {"Steel hard", [] { return Sample{pluck({home, 0.09, 0.95, 5.5, 0.22, 0.2, 5}, 3.0)}; }},
        {"Bar soft", [] { return Sample{bar(0.1)}; }},
        {"Bar hard", [] { return Sample{bar(0.9)}; }},
        {"Tube soft", [] { return tube(0.60, 1.5); }},
        {"Tube hard", [] { return tube(0.76, 1.5); }},
        {"Vowel a", [] { return vowel("a", home); }},
        {"Vowel e", [] { return vowel("e", home); }},
        {"Vowel i", [] { return vowel("i", home); }},
        {"Vowel o", [] { return vowel("o", home); }},
        {"Vowel u", [] { return vowel("u", home); }},
        {"Phrase", [] { return Sample{phrase()}; }},
        {"Dah", [] { return Sample{syllable()}; }},
    };
    return all;
}

}  // namespace vantoric::made
