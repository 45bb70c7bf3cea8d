// What drawing the board costs: a repaint from the tiles that are kept, and the rendering of all tiles that a
// new size of the squares brings.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>

#include "base/program_paths.h"
#include "shell/qt/board_paint.h"

namespace {

BoardScene scene_of(int square_size) {
    program_paths.program_folder = PROJECT_FOLDER "/data/";
    BoardScene scene;
    scene.position = START_POSITION;
    scene.square_size = square_size;
    scene.last_from = 32;
    scene.last_to = 28;
    return scene;
}

void repaint_board(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    BoardScene scene = scene_of(size);
    scene.numbers = state.range(1) != 0;
    QImage screen(size * 10, size * 10, QImage::Format_RGB32);
    for (auto _ : state) {
        QPainter painter(&screen);
        paint_board(painter, scene);
    }
}
BENCHMARK(repaint_board)
    ->ArgNames({"square", "numbers"})
    ->Args({44, 0})
    ->Args({44, 1})
    ->Args({120, 0})
    ->Args({120, 1})
    ->Unit(benchmark::kMillisecond);

void new_square_size(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    const BoardScene scene = scene_of(size);
    QImage screen(size * 10, size * 10, QImage::Format_RGB32);
    for (auto _ : state) {
        forget_art();
        QPainter painter(&screen);
        paint_board(painter, scene);
    }
}
BENCHMARK(new_square_size)->ArgName("square")->Arg(44)->Arg(120)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
