#include <benchmark/benchmark.h>

#include <string>
#include <vector>

// One column a counter, one line a scene, unless the caller asks for something else.
int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    std::string tabular = "--benchmark_counters_tabular=true";
    arguments.insert(arguments.begin() + 1, tabular.data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
