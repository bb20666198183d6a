#include "host/document/Project.h"

#include <gmock/gmock.h>

#include <memory>

#include "host/document/FilterChain.h"
#include "host/kernel/KernelStore.h"
#include "host/render/PluginSession.h"

namespace document {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ProjectTest : public testing::Test {
protected:
    static void SetUpTestSuite() { s_session = std::make_unique<render::PluginSession>(PLUGIN); }
    static void TearDownTestSuite() { s_session.reset(); }
    void SetUp() override { KernelStore::instance().clear(); }

    static void apply(const QStringList& filters) { setFilterChain(filters, s_session->catalog()); }

    static std::vector<InstanceState> chain() {
        std::vector<InstanceState> states;
        for (const InstanceId& id : KernelStore::instance().instances())
            states.push_back(*KernelStore::instance().state(id.objectId));
        return states;
    }

    Project read(const QByteArray& bytes, const std::string& folder = "/projects") {
        notices.clear();
        return readProject(bytes, folder, notices);
    }

    /// What reading says; the store must be as it was.
    std::string refusal(const QByteArray& bytes) {
        const std::vector<InstanceState> before = chain();
        try {
            read(bytes);
        } catch (const ProjectError& error) {
            EXPECT_TRUE(chain() == before) << "the store was changed";
            EXPECT_THAT(error.what(), testing::Not(HasSubstr("\n")));
            return error.what();
        }
        return "accepted";
    }

    std::vector<std::string> notices;
    static std::unique_ptr<render::PluginSession> s_session;
};
std::unique_ptr<render::PluginSession> ProjectTest::s_session;

QByteArray project(const QByteArray& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<fxproject version=\"1\">" + content +
           "</fxproject>\n";
}

TEST_F(ProjectTest, BringsBackChainInputsAndRange) {
    apply({"Blur and enhance:Blur=0=1;20|=5;40=9,Enhance=true", "Object separator:Enabled=0",
           "Blur and enhance:Blur=3", "Adaptive threshold:Min=12.8"});
    const std::vector<InstanceState> saved = chain();
    Project out;
    out.inputs = {"/projects/reel/shot_####.png", "/elsewhere/a <&\"> b.png",
                  "/projects/\xff\xfe.png"};
    out.range = "0-4095";
    const QByteArray bytes = writeProject(out, "/projects");
    EXPECT_EQ(bytes, writeProject(out, "/projects"));
    EXPECT_TRUE(bytes.contains("path=\"reel/shot_####.png\"")) << bytes.toStdString();

    apply({"Degauss"});
    const Project in = read(bytes, "/moved");
    EXPECT_TRUE(chain() == saved);
    EXPECT_THAT(in.inputs, ElementsAre("/moved/reel/shot_####.png", "/elsewhere/a <&\"> b.png",
                                       "/moved/\xff\xfe.png"));
    EXPECT_EQ(in.range, "0-4095");
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(ProjectTest, KeepsWhatItDoesNotKnowInItsPlace) {
    const QByteArray content =
        "<chain><filter type=\"9001\" key=\"Sparkle\"><parameter name=\"Glow\" value=\"7\"><!-- a "
        "lot --></parameter></filter>"
        "<filter type=\"2003\" animated=\"false\"><parameter name=\"Blur\" value=\"4\"/>"
        "<parameter name=\"Bokeh\" value=\"3\"/></filter>"
        "<filter type=\"9002\" key=\"Shine\"/></chain><view zoom=\"2\">half &amp; half</view>";
    const Project kept = read(project(content));
    EXPECT_THAT(notices, ElementsAre(HasSubstr("\"Sparkle\""), HasSubstr("Bokeh"),
                                     HasSubstr("\"Shine\""), HasSubstr("<view>")));
    const QByteArray bytes = writeProject(kept, "/projects").simplified();
    int position = 0;
    for (const char* piece :
         {"key=\"Sparkle\"", "name=\"Glow\" value=\"7\"", "<!-- a lot -->", "type=\"2003\"",
          "name=\"Blur\" value=\"4\"", "name=\"Bokeh\" value=\"3\"", "key=\"Shine\"",
          "<view zoom=\"2\">half &amp; half</view>"}) {
        const int found = bytes.indexOf(piece, position);
        EXPECT_GE(found, position) << piece << " in " << bytes.toStdString();
        position = found;
    }
}

TEST_F(ProjectTest, RefusesInOneLineAndLeavesTheStoreAlone) {
    apply({"Blur and enhance:Blur=7"});
    const QByteArray blur = "<filter type=\"2003\"><parameter name=\"Blur\" value=\"";
    const QByteArray nested =
        QByteArray("<a>").repeated(100'000) + QByteArray("</a>").repeated(100'000);
    QByteArray attributes;
    for (int i = 0; i < 10'000; ++i) attributes += " a" + QByteArray::number(i) + "=\"\"";
    const struct {
        QByteArray bytes;
        const char* says;
    } cases[] = {
        {"", "is empty"},
        {"hello", "damaged"},
        {project("<chain>").chopped(5), "damaged"},
        {"<svg/>", "<svg> instead of <fxproject>"},
        {"<fxproject/>", "version \"\""},
        {"<fxproject version=\"2\"/>", "use a newer one"},
        {project("\xff"), "not UTF-8"},
        {"<!DOCTYPE a [<!ENTITY b \"c\">]>" + project(""), "DOCTYPE"},
        {project(nested), "more than 64 levels"},
        {project("<a" + attributes + "/>"), "KiB without a new tag"},
        {project("<a" + attributes.left(attributes.indexOf(" a100")) + "/>"),
         "more than 64 attributes"},
        {project(QByteArray("<a/>").repeated(500'001)), "more than 500000 elements"},
        {project("<chain>" + QByteArray("<filter/>").repeated(10'001) + "</chain>"),
         "more than 10000 filters"},
        {QByteArray(65 << 20, '<'), "has 65 MiB"},
        {project("<input><file path=\"\"/></input>"), "has no path"},
        // The first filter is good and must not stay.
        {project("<chain>" + blur + "4\"/></filter>" + blur + "red\"/></filter></chain>"),
         "the filter \"type 2003\" cannot be read: parameter \"Blur\": value \"red\" is no int"},
        {project("<chain>" + blur +
                 "4\"><key frame=\"x\" value=\"1\"/></parameter></filter>"
                 "</chain>"),
         "frame \"x\" is no whole number"},
    };
    for (const auto& row : cases) EXPECT_THAT(refusal(row.bytes), HasSubstr(row.says));
}

}  // namespace
}  // namespace document
