#pragma once
// The agent service over a fake host with a real show, history and engine.
// Tests build the show with the helpers, `open` it, and call tools by name
// with JSON text for arguments.

#include "FakeAgentHost.h"
#include "ShowBuilder.h"

#include "LiveAgent/AgentService.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace velarion::testing {

class AgentServiceFixture : public ::testing::Test {
protected:
    AgentServiceFixture() {
        show.title = "Gala";
        show.sections.push_back(Section{Uuid::random(), "Welcome", std::nullopt, std::nullopt, {}});
        show.sections.push_back(Section{Uuid::random(), "Awards", std::nullopt, std::nullopt, {}});
    }

    Uuid addItem(const std::string& name, MediaKind kind, std::optional<double> seconds = {}) {
        return build.addItem(name, kind, seconds);
    }
    Cue& add(std::string name, CueKind kind, std::size_t section = 0, Follow follow = Follow::manual) {
        return build.add(std::move(name), std::move(kind), follow, section);
    }
    Cue& video(std::string name, std::size_t section = 0, Follow follow = Follow::manual) {
        return build.video(std::move(name), follow, section);
    }

    void open() { host->load(show); }

    AgentResponse call(const std::string& tool, const std::string& arguments = "{}") {
        const std::optional<JSONValue> parsed = JSONValue::parse(arguments);
        EXPECT_TRUE(parsed) << arguments;
        return service.handle(AgentRequest{7, tool, parsed.value_or(JSONValue::Object{})});
    }
    // The result of a call that must succeed.
    JSONValue ok(const std::string& tool, const std::string& arguments = "{}") {
        const AgentResponse response = call(tool, arguments);
        EXPECT_TRUE(response.ok) << tool << ": " << response.error.value_or("");
        return response.result.value_or(JSONValue());
    }
    // The sentence of a call that must fail.
    std::string refusal(const std::string& tool, const std::string& arguments = "{}") {
        const AgentResponse response = call(tool, arguments);
        EXPECT_FALSE(response.ok) << tool << " succeeded";
        return response.error.value_or("");
    }

    static std::string textOf(const JSONValue* value) { return value ? value->stringValue().value_or("") : "<absent>"; }

    std::shared_ptr<FakeAgentHost> host = std::make_shared<FakeAgentHost>();
    AgentService service{host, host->scheduler};
    Show show;
    ShowBuilder build{show};
};

} // namespace velarion::testing
