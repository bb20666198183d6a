// Projects, and runs over them that are shared out, interrupted and gone on with.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <utility>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kBlur = "Blur and enhance:Blur=0=1;8=9";

/// Nine frames and a project over them, the blur of which grows.
class FxrenderProject : public FxrenderTest {
protected:
    void SetUp() override {
        saveSequence(kFrames, 61, 47);
        run({"save", "reel.fxp", "shot_####.png", "-f", kBlur, "-f", "Channel separation"});
    }

    ProgramResult render(const Arguments& others, int expectedExitCode = 0) {
        return run(Arguments{"render", "reel.fxp"} + others, expectedExitCode);
    }
    void expectSamePictures(const QString& a, const QString& b) const {
        for (int frame = 0; frame < kFrames; ++frame)
            EXPECT_EQ(contents(a + shot(frame)), contents(b + shot(frame))) << frame;
    }
    /// When each file of the folder was last changed.
    std::vector<std::filesystem::file_time_type> times(const QString& name) const {
        std::vector<std::filesystem::file_time_type> all;
        for (int frame = 0; frame < kFrames; ++frame)
            all.push_back(std::filesystem::last_write_time(path(name + shot(frame)).toStdString()));
        return all;
    }

    static constexpr int kFrames = 9;
};

TEST_F(FxrenderProject, RendersWhatTheSameFiltersWouldMake) {
    run({"apply", "shot_####.png", "-o", "a/", "-f", kBlur, "-f", "Channel separation"});
    render({"-o", "p/"});
    expectSamePictures("a/", "p/");

    // One value for the keys, keys for one value, the second of two filters of a key.
    run({"apply", "shot_####.png", "-o", "b/", "-f", "Blur and enhance:Blur=3", "-f",
         "Channel separation:Channel=0=1;8=3"});
    render({"-o", "q/", "--set", "blur + enhance:blur=3", "--set",
            "channel separation:Channel=0=R;8=3"});
    expectSamePictures("b/", "q/");
    run({"save", "two.fxp", "shot_####.png", "-f", "Degauss", "-f", "Degauss:Method=0"});
    EXPECT_THAT(run({"check", "two.fxp", "--set", "Degauss#2:Method=0,Threshold=1"}, 1).out,
                HasSubstr("Amount (Threshold) of 1"));
    const struct {
        const char* setting;
        const char* message;
    } rows[] = {{"Degauss:Method=0", "write \"Degauss#1:...\""},
                {"Degauss#3:Method=0", "the last one is \"Degauss#2\""},
                {"Degauss#x:Method=0", "after #"},
                {"Open_Close:Dilate=2", "the chain has no \"Open_Close\""},
                {"Degauss", "sets nothing"},
                {"Degauss#1:Amount=0=1,amount=2", "given twice"},
                {"Degauss#1:Amount=99", "out of range"}};
    for (const auto& row : rows)
        expectRefusal({"check", "two.fxp", "--set", row.setting}, 2, row.message);
}

TEST_F(FxrenderProject, IsCountedAndCheckedLikeItsFilters) {
    EXPECT_EQ(run({"check", "reel.fxp", "--frames", "2-3"}).out,
              "2 frames: nothing to object to\n");
    const Arguments chain = each("-f", {"Channel separation", "Adaptive threshold:Size=11,Min=0"});
    run(Arguments{"save", "c.fxp", "shot_####.png"} + chain);
    EXPECT_EQ(run({"count", "c.fxp", "-q"}).out,
              run(Arguments{"count", "shot_####.png", "-q"} + chain).out);
}

TEST_F(FxrenderProject, NeverReplacesWhatIsNoProjectAndKeepsTheRangeOfSamples) {
    write("other.fxp", "<svg/>");
    expectRefusal({"save", "other.fxp", "shot_####.png", "-f", "Degauss"}, 73, "no project");
    EXPECT_EQ(contents("other.fxp"), "<svg/>");
    expectRefusal({"save", "shot_0000.png", "shot_0001.png", "-f", "Degauss"}, 2, ".fxp");
    run({"save", "reel.fxp", "shot_####.png", "-f", "Channel separation:Channel=1", "--range",
         "0-100"});
    render({"-o", "low/"});
    run({"apply", "shot_####.png", "-o", "b/", "--range", "0-100", "-f",
         "Channel separation:Channel=1"});
    expectSamePictures("low/", "b/");
    render({"-o", "full/", "--range", "0-255"});
    EXPECT_NE(contents("low/" + shot(0)), contents("full/" + shot(0)));
}

/// What stands is told from what would be written today by what it was made of.
TEST_F(FxrenderProject, ResumeDoesWhatIsMissingStaleOrDamagedAndNothingElse) {
    render({"-o", "out/"});
    const auto before = times("out/");
    EXPECT_THAT(render({"-o", "out/", "--resume"}).err, HasSubstr("frames 0 to 8: up to date"));
    EXPECT_EQ(times("out/"), before);

    QFile::remove(path("out/" + shot(1)));
    write("out/" + shot(2), "damaged");
    save(picture(77, 61, 47), shot(4));  // another input
    const Arguments other = {"-o", "out/", "--set", "Blur and enhance:Blur=0=1;6=7;8=8"};
    const Arguments resume = other + Arguments{"--resume"};
    const std::string dry = render(resume + Arguments{"-n"}).out;
    EXPECT_THAT(dry, HasSubstr("4 frames to render\n"));
    EXPECT_FALSE(files().contains("out/" + shot(1))) << "a dry run writes nothing";
    EXPECT_THAT(render(resume).err,
                testing::AllOf(HasSubstr("frame 2: damaged"),
                               HasSubstr("frame 4: stale (the input changed"),
                               HasSubstr("frame 8: stale (the settings changed"),
                               HasSubstr("frames 0, 3 and 5 to 7: up to date and left alone")));
    const auto after = times("out/");
    for (const int frame : {0, 3, 5, 6, 7}) EXPECT_EQ(after[frame], before[frame]) << frame;
    render({"-o", "fresh/", other[2], other[3]});
    expectSamePictures("out/", "fresh/");

    EXPECT_THAT(render({"-o", "out/", "--resume", "--compression", "9", "--frames", "3"}).err,
                HasSubstr("frame 3: stale (the output's format changed"));
    std::filesystem::remove_all(path("out/.fxrender").toStdString());
    EXPECT_THAT(render({"-o", "out/", "--resume"}).err, HasSubstr("nobody recorded"));
    expectRefusal({"render", "reel.fxp", "-o", "pages.tif", "--resume"}, 2,
                  "a file for each frame");
    // A video is there when it is finished, with one frame as with many.
    render({"-o", "one.mkv", "--frames", "3"});
    EXPECT_FALSE(files().filter("one.mkv").isEmpty());
    expectRefusal({"render", "reel.fxp", "-o", "one.mkv", "--frames", "3", "--shard", "1/2"}, 2,
                  "a file for each frame");
}

TEST_F(FxrenderProject, ShardsAndJobsShareOutTheFramesAndChangeNoPixel) {
    render({"-o", "whole/", "--report", "whole.json", "-j", "7"});
    std::map<int, std::string> pixels;
    const auto gather = [&](const QString& report) {
        const json all = jsonIn(report);
        for (const json& frame : all["frames"])
            EXPECT_TRUE(pixels.emplace(frame["frame"], frame["pixels"]).second) << frame;
    };
    gather("whole.json");
    const auto wanted = std::exchange(pixels, {});
    ASSERT_EQ(wanted.size(), std::size_t(kFrames));
    for (const std::string shard : {"4/4", "1/4", "3/4", "2/4"}) {
        render({"-o", "out/", "--shard", shard, "-j", "1", "--report", "r.json"});
        gather("r.json");
    }
    EXPECT_EQ(pixels, wanted);
    expectSamePictures("whole/", "out/");
    EXPECT_EQ(run({"verify", "reel.fxp", "-o", "out/"}).out,
              "9 of 9 frames are there, up to date and undamaged\n");
    render({"-o", "out/", "--shard", "12/12"});  // has nothing to do
    for (const char* wrong : {"0/3", "4/3", "1", "1/3/3", "x/2"})
        expectRefusal({"render", "reel.fxp", "-o", "out/", "--shard", wrong}, 2, "--shard");
}

TEST_F(FxrenderProject, VerifySaysWhatIsWrongWithWhich) {
    const Arguments chain = {"shot_####.png",     "-o", "out/", "-f", kBlur, "-f",
                             "Channel separation"};
    apply(chain + Arguments{"--shard", "1/2"});
    const ProgramResult half = run({"verify", "reel.fxp", "-o", "out/"}, 1);
    EXPECT_THAT(half.out, testing::StartsWith("frame 1: missing\nframe 3: missing\n"));
    EXPECT_THAT(half.out, HasSubstr("5 of 9 frames are there"));
    render({"-o", "out/", "--resume"});
    const auto time = times("out/")[6];
    // As many bytes, and the time it had: only reading it tells.
    std::string bytes = contents("out/" + shot(6));
    bytes[bytes.size() / 2] = static_cast<char>(~bytes[bytes.size() / 2]);
    write("out/" + shot(6), QByteArray::fromStdString(bytes));
    std::filesystem::last_write_time(path("out/" + shot(6)).toStdString(), time);
    write("out/.fxrender/1-of-2.torn.ledger", contents("reel.fxp").substr(0, 99).c_str());
    Arguments verify = Arguments{"verify"} + chain;
    EXPECT_EQ(run(verify, 1).out,
              "frame 6: damaged or replaced (its bytes are not those that were written)\n"
              "8 of 9 frames are there, up to date and undamaged\n");
    chmod(path("out").toLocal8Bit(), 0555);  // an archive, say
    chmod(folder().toLocal8Bit(), 0755);
    EXPECT_THAT(fxrenderAsUser(verify).out, HasSubstr("8 of 9 frames are there"));
    verify[5] = "Blur and enhance:Blur=0=1;4=5;8=8";
    EXPECT_THAT(run(verify, 1).out, HasSubstr("frames 7 to 8: stale (the settings changed since)"));
}

TEST_F(FxrenderProject, MemoryLowersTheJobsOrRefuses) {
    const auto said = [&](const char* size) {
        return render({"-o", "out/", "-j", "4", "--max-memory", size}).err;
    };
    EXPECT_THAT(said("2G"), Not(HasSubstr("instead of")));
    EXPECT_THAT(said("160.12M"), HasSubstr("2 jobs instead of 4"));
    expectRefusal({"render", "reel.fxp", "-o", "out/", "--max-memory", "150M"}, 2, "--max-memory");
    for (const char* wrong : {"x", "2X", "0", "-1G", "1e30"})
        expectRefusal({"render", "reel.fxp", "-o", "out/", "--max-memory", wrong}, 2, "500M or 2G");
}

TEST_F(FxrenderProject, TellsEveryFrameAsATable) {
    write(shot(8), "no picture");
    render({"-o", "out/", "--keep-going", "--report", "r.csv", "--set", "Blur and enhance:Blur=2"},
           1);
    const std::string csv = contents("r.csv");
    EXPECT_EQ(csv.find("frame,status,milliseconds,objects,pixels,warnings,error,input,output\n0"),
              0u);
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 1 + kFrames);
    EXPECT_THAT(csv, HasSubstr("\n8,failed,"));
    // The same over it; a report of the other kind is not replaced.
    EXPECT_THAT(render({"-o", "out/", "--keep-going", "--resume", "--report", "r.csv", "--set",
                        "Blur and enhance:Blur=2"},
                       1)
                    .err,
                HasSubstr("left alone"));
    EXPECT_THAT(contents("r.csv"), HasSubstr("\n7,up to date,0,,,"));
    write("j.csv", "{\"exitCode\": 0}");
    expectRefusal({"render", "reel.fxp", "-o", "out/", "--report", "j.csv"}, 73, "j.csv");
}

// What is wrong with a project's text is told in tests/host/document.
TEST_F(FxrenderProject, FilesThatAreNoProjectsAreNamedWithTheReason) {
    const QByteArray head = "<fxproject version=\"1\"><chain>", end = "</chain></fxproject>";
    write("bad.fxp", head +
                         "<filter type=\"2003\"><parameter name=\"Blur\" value=\"many\"/>"
                         "</filter>" +
                         end);
    expectRefusal({"render", "bad.fxp", "-o", "out/"}, 65, "bad.fxp: line 1: the filter");
    write("bad.fxp", head + end);
    expectRefusal({"check", "bad.fxp"}, 65, "no input");
    std::filesystem::resize_file(path("bad.fxp").toStdString(), 400 << 20);
    expectRefusal({"check", "bad.fxp"}, 65, "MiB");
    expectRefusal({"render", "none.fxp", "-o", "out/"}, 66, "none.fxp");
    expectRefusal({"render", ".", "-o", "out/"}, 65, "no regular file");
}

}  // namespace
