#include "app/cocoa/user_defaults.hpp"

#import <Foundation/Foundation.h>

namespace velmora {

namespace {

NSString* keyText(std::string_view key) {
    return [[NSString alloc] initWithBytes:key.data()
                                    length:key.size()
                                  encoding:NSUTF8StringEncoding];
}

class UserDefaultsPreferences final : public PreferenceStore {
  public:
    std::optional<std::string> text(std::string_view key) const override {
        NSString* name = keyText(key);
        if (name == nil) return std::nullopt;
        NSString* value = [NSUserDefaults.standardUserDefaults stringForKey:name];
        if (value == nil || value.UTF8String == nullptr) return std::nullopt;
        return std::string(value.UTF8String);
    }

    std::optional<std::string> setText(std::string_view key, const std::string& value) override {
        NSString* name = keyText(key);
        NSString* text = [NSString stringWithUTF8String:value.c_str()];
        if (name == nil || text == nil) return "the text is not valid UTF-8";
        // The defaults system writes to disk on its own schedule and never reports failure.
        [NSUserDefaults.standardUserDefaults setObject:text forKey:name];
        return std::nullopt;
    }
};

}  // namespace

std::unique_ptr<PreferenceStore> makeUserDefaultsPreferences() {
    return std::make_unique<UserDefaultsPreferences>();
}

}  // namespace velmora
