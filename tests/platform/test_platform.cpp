#include "velmora/platform/DynamicLibrary.h"
#include "velmora/platform/FileSystem.h"
#include "velmora/platform/LargePages.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace velmora {
namespace {

TEST(DynamicLibrary, FindsFunctionsUnderNamesWithEitherSeparator) {
    std::string path = VELMORA_TEST_MODULE;
    std::ranges::replace(path, '/', '\\');
    const DynamicLibrary library(path);
    ASSERT_TRUE(library.isLoaded()) << library.getErrorString();
    EXPECT_EQ(library.getErrorString(), "");
    EXPECT_EQ(library.getFunction<double (*)(double)>("thrice")(9.0), 27.0);
    EXPECT_EQ(library.getFunction<void (*)()>("no_such_function"), nullptr);
}

TEST(DynamicLibrary, SaysWhyItCannotBeLoaded) {
    for (const std::string name : {"no_such_library.so", "libm.so.6", "."}) { // no search path counts
        const DynamicLibrary missing(name);
        EXPECT_FALSE(missing.isLoaded());
        EXPECT_TRUE(std::filesystem::path(missing.getPath()).is_absolute());
        EXPECT_THAT(missing.getErrorString(), testing::HasSubstr(missing.getPath()));
        EXPECT_EQ(missing.getFunction<void (*)()>("f"), nullptr);
    }
    const DynamicLibrary nameless("");
    EXPECT_FALSE(nameless.isLoaded());
    EXPECT_EQ(nameless.getErrorString(), "the name of the library gives no path");
}

TEST(FileSystem, OnlyRegularFilesAreOpened) {
    EXPECT_EQ(openFile(".", "r"), nullptr);
    EXPECT_EQ(openFile("", "w"), nullptr);
#if !defined(_WIN32)
    std::filesystem::remove("pipe");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_FALSE(canOpenForReading("pipe")); // would wait for a writer
#endif
}

TEST(FileSystem, WritesThroughBackslashesIntoFolders) {
    std::filesystem::create_directory("out");
    std::filesystem::remove("out/x.txt");
    EXPECT_EQ(existingName("out\\x.txt"), "out\\x.txt");
    std::FILE* file = openFile("out\\x.txt", "w");
    ASSERT_NE(file, nullptr);
    std::fputs("abc", file);
    EXPECT_EQ(positionIn(file), 3);
    std::fclose(file);
    EXPECT_EQ(std::filesystem::file_size("out/x.txt"), 3u);
    EXPECT_EQ(queryFile("out\\y.txt"), FileStatus::NotFound);
}

TEST(LargePages, ArraysAreAlignedAndHoldWhatIsWritten) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{1000}, std::size_t{1} << 20}) {
        const EvaluationArray<double> array(size, 0.5);
        const std::uintptr_t alignment = size * sizeof(double) < (std::size_t{2} << 20) ? 64 : 2u << 20;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(array.data()) % alignment, 0u) << size;
        EXPECT_EQ(std::ranges::count(array, 0.5), static_cast<std::ptrdiff_t>(size));
    }
    EXPECT_THROW(static_cast<void>(allocateLargePages(std::numeric_limits<std::size_t>::max() - 8)),
                 std::bad_alloc);
}

} // namespace
} // namespace velmora
