#include "base/line_input.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <vector>

namespace {

class LineInputTest : public testing::Test {
  protected:
    int ends[2] = {-1, -1};
    LineInput input;
    std::string line;

    void SetUp() override {
        ASSERT_EQ(pipe(ends), 0);
        input.descriptor = ends[0];
    }
    void TearDown() override {
        close(ends[0]);
        if (ends[1] >= 0) close(ends[1]);
    }
    void send(const std::string& text) const {
        ASSERT_EQ(write(ends[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void end() {
        close(ends[1]);
        ends[1] = -1;
    }
    // Everything up to the end.
    std::vector<std::string> all() {
        std::vector<std::string> lines;
        for (;;) {
            const LineStatus status = read_input_line(input, 1000, line);
            if (status == LINE_ENDED) return lines;
            if (status == LINE_READ) lines.push_back(line);
        }
    }
};

TEST_F(LineInputTest, Lines) {
    send("one\ntwo\r\n\n three \nlast");
    end();
    EXPECT_EQ(all(), (std::vector<std::string>{"one", "two", "", " three ", "last"}));
    EXPECT_EQ(read_input_line(input, 0, line), LINE_ENDED) << "and stays ended";
}

TEST_F(LineInputTest, NothingAtAll) {
    end();
    EXPECT_EQ(read_input_line(input, 1000, line), LINE_ENDED);
}

TEST_F(LineInputTest, ALineInParts) {
    line = "untouched";
    send("on");
    EXPECT_EQ(read_input_line(input, 1000, line), LINE_WAITING);
    send("e\nt");
    EXPECT_EQ(read_input_line(input, 1000, line), LINE_READ);
    EXPECT_EQ(line, "one");
    EXPECT_EQ(read_input_line(input, 0, line), LINE_WAITING);
    send("wo\n");
    EXPECT_EQ(read_input_line(input, 1000, line), LINE_READ);
    EXPECT_EQ(line, "two");
}

TEST_F(LineInputTest, WaitsAsLongAsTold) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(read_input_line(input, 30, line), LINE_WAITING);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(29));
}

TEST_F(LineInputTest, LongLinesComeInParts) {
    const std::string text(LINE_INPUT_LIMIT, 'a');
    std::string read;
    for (size_t at = 0; at < text.size(); at += 4096) {
        send(text.substr(at, 4096));
        const LineStatus status = read_input_line(input, 1000, line);
        if (at + 4096 < text.size()) {
            ASSERT_EQ(status, LINE_WAITING);
        } else {
            ASSERT_EQ(status, LINE_READ);
        }
    }
    EXPECT_EQ(line, text);
    send("b\n");
    end();
    EXPECT_EQ(all(), std::vector<std::string>{"b"});
}

TEST_F(LineInputTest, AnInputThatCannotBeReadHasEnded) {
    close(ends[0]);
    EXPECT_EQ(read_input_line(input, 0, line), LINE_ENDED);
    ends[0] = dup(0);
}

}  // namespace
