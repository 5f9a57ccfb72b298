"""What a build installs, and how hosts and providers of other projects are built with it."""

import pathlib

from installed import (CONSUMER, PLATFORM, ROOT, WHOLE, InstalledCase, files_below, from_cache, of_the_provider,
                       of_the_virtual_tv, of_the_window, without_build_type)


class InstalledTest(InstalledCase):
    def test_everything_is_installed_and_nothing_else(self):
        place = self.install()
        lib = from_cache("CMAKE_INSTALL_LIBDIR")
        expected = of_the_provider(lib)
        if WHOLE:
            verbs = self.done(place / "bin/vtv", "__complete", "").split()
            expected |= of_the_virtual_tv(lib, verbs) | of_the_window()
        found = without_build_type(files_below(place))
        self.assertEqual(set(), expected - found)
        pages = {name for name in found if WHOLE and name.startswith("share/man/man1/vtv-")}  # of verbs of verbs
        self.assertEqual(set(), found - expected - pages)

    def test_another_project_finds_it_with_find_package(self):
        place = self.install()
        build = self.build_consumer("find_package", f"-DCMAKE_PREFIX_PATH={place}")
        self.expect_a_host_and_a_provider(build)
        plugins = self.done("cmake", build).partition("Providers lie in ")[2].splitlines()[0]
        self.assertTrue(plugins.startswith(str(place)), plugins)
        self.expect_installed_provider_answers(build / "host", plugins)

    def test_a_version_that_was_not_asked_for_is_not_found(self):
        place = self.install()
        script = self.folder / "CMakeLists.txt"
        for version, status in (("0.1", 0), ("1.0", 1), ("0.999", 1)):
            script.write_text("cmake_minimum_required(VERSION 3.25)\nproject(asks LANGUAGES C)\n"
                              f"find_package(si-ready {version} CONFIG REQUIRED)\n")
            result = self.run_command("cmake", "-S", ".", "-B", "asks", "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={place}")
            self.assertEqual(status, result.returncode, result)

    def test_another_project_finds_it_with_pkg_config(self):
        place = self.install()
        path = place / from_cache("CMAKE_INSTALL_LIBDIR") / "pkgconfig"
        flags = self.done("pkg-config", "--cflags", "si-ready", PKG_CONFIG_PATH=path).split()
        compiler = from_cache("CMAKE_C_COMPILER")
        self.done(compiler, CONSUMER / "host.c", *flags, "-o", "host", "-ldl")
        self.done(compiler, "-shared", "-fPIC", CONSUMER / "provider.c", *flags, "-o", "libprovider.so")
        self.expect_a_host_and_a_provider(self.folder)
        plugins = self.done("pkg-config", "--variable=plugindir", "si-ready", PKG_CONFIG_PATH=path).strip()
        self.expect_installed_provider_answers(self.folder / "host", plugins)

    def test_another_project_has_it_as_a_folder_of_its_own(self):
        self.expect_a_host_and_a_provider(self.build_consumer("add_subdirectory"))

    def test_another_project_installs_it_only_where_it_says_so(self):
        header = "include/si-ready/abi/si_provider.h"
        for option, expected in ((), set()), (("-DSI_INSTALL=ON",), {header}):
            build = self.build_consumer("add_subdirectory", *option)
            self.done("cmake", "--install", build, "--component", "si-ready-dev", "--prefix", self.folder / "prefix")
            found = {name for name in files_below(self.folder / "prefix") if name.startswith("include")}
            self.assertEqual(expected, found, option)

    def test_another_project_fetches_it(self):
        self.expect_a_host_and_a_provider(self.build_consumer("FetchContent"))

    def test_the_provider_alone_is_installed_where_the_system_has_its_libraries(self):
        lib = "lib/x86_64-linux-gnu"
        build = self.folder / "alone"
        self.done("cmake", "-S", ROOT, "-B", build, "-G", "Ninja", "-DSI_BUILD_VIRTUAL_TV=OFF", "-DSI_BUILD_TESTS=OFF",
                  "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0", "-DCMAKE_INSTALL_PREFIX=/usr",
                  f"-DCMAKE_INSTALL_LIBDIR={lib}", f"-DCMAKE_CXX_COMPILER={from_cache('CMAKE_CXX_COMPILER')}")
        self.done("cmake", "--build", build)
        self.done("cmake", "--install", build, DESTDIR=self.folder / "stage")
        self.assertEqual({f"usr/{name}" for name in of_the_provider(lib)},
                         without_build_type(files_below(self.folder / "stage")))
