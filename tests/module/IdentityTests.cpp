// SPDX-License-Identifier: AGPL-3.0-or-later
#include "host/ModuleIdentity.h"

#include <gtest/gtest.h>

#include "module/ModuleUnderTest.h"

namespace
{
const char* const moduleClass = "Audio Module Class";
const char* const controllerClass = "Component Controller Class";
const char* const compatibilityClass = "Plugin Compatibility Class";

ModuleIdentity::ClassInfo classOf (const ModuleIdentity& identity, const juce::String& category)
{
    for (const auto& info : identity.classes)
        if (info.category == category)
            return info;

    ADD_FAILURE() << "no class of category " << category;
    return {};
}
} // namespace

TEST (ModuleIdentity, NamesItsMakerAndGivesNoMailAddress)
{
    const auto identity = ModuleIdentity::read (ModuleUnderTest::file());

    EXPECT_EQ (identity.vendor, "Kestrin");
    EXPECT_EQ (identity.url, "https://kestrin.example");
    EXPECT_EQ (identity.email, "");
}

TEST (ModuleIdentity, DeclaresUnicodeAndNothingElseInTheFactoryFlags)
{
    constexpr int unicode = 0x10;
    EXPECT_EQ (ModuleIdentity::read (ModuleUnderTest::file()).factoryFlags, unicode);
}

TEST (ModuleIdentity, RegistersThreeClassesUnderTheirNativeIds)
{
    const auto identity = ModuleIdentity::read (ModuleUnderTest::file());

    ASSERT_EQ (identity.classes.size(), 3u);
    EXPECT_EQ (classOf (identity, moduleClass).id, "ABCDEF019182FAEB4B74726E546D7338");
    EXPECT_EQ (classOf (identity, controllerClass).id, "ABCDEF011234ABCD4B74726E546D7338");
    EXPECT_EQ (classOf (identity, compatibilityClass).id, "ABCDEF01C0DEF00D4B74726E546D7338");
}

TEST (ModuleIdentity, PutsModuleAndControllerAmongTheFilters)
{
    const auto identity = ModuleIdentity::read (ModuleUnderTest::file());

    EXPECT_EQ (classOf (identity, moduleClass).subCategories, "Fx|Filter");
    EXPECT_EQ (classOf (identity, controllerClass).subCategories, "Fx|Filter");
    EXPECT_EQ (classOf (identity, compatibilityClass).subCategories, "");
}

TEST (ModuleIdentity, GivesEveryClassItsNameAndVersions)
{
    for (const auto& info : ModuleIdentity::read (ModuleUnderTest::file()).classes)
    {
        EXPECT_EQ (info.name, "Kestrin Tamsile Filter") << info.category;
        EXPECT_EQ (info.vendor, "Kestrin") << info.category;
        EXPECT_EQ (info.version, "1.0.0") << info.category;
        EXPECT_EQ (info.sdkVersion, "VST 3.7.12") << info.category;
    }
}

TEST (ModuleIdentity, MatchesTheHostedInstance)
{
    ModuleUnderTest module;
    juce::PluginDescription description;
    module.instance().fillInPluginDescription (description);

    EXPECT_EQ (module.instance().getName(), "Kestrin Tamsile Filter");
    EXPECT_EQ (description.manufacturerName, "Kestrin");
    EXPECT_EQ (description.category, "Fx|Filter");
    EXPECT_EQ (description.version, "1.0.0");
    EXPECT_FALSE (description.isInstrument);
    EXPECT_TRUE (module.instance().hasEditor());
}
