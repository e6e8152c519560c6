# Shared compile settings for our own targets. Third-party headers come in as
# SYSTEM includes so that -Werror applies to our code only.

# Records have default member values, so partial aggregate initialisation is
# intended and the missing-initializer warning is noise.
set(VELARION_WARNINGS -Wall -Wextra -Wpedantic -Werror -Wno-missing-field-initializers)

if(VELARION_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# ThreadSanitizer for the tests that run threads (`make thread-test`).
if(VELARION_TSAN)
  # -O1 -g1: reports keep their lines, and the tree builds in far less time.
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=thread)
endif()

if(VELARION_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# The core libraries must stay free of platform code; this list is what the
# boundary check in `make test` compares their link lines against.
set(VELARION_CORE_LIBRARIES Identity LiveModel ShowStage LiveEngine LiveAgentKit LiveAgent Live ShowCore)

function(velarion_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/..)
  target_compile_options(${name} PRIVATE ${VELARION_WARNINGS})
  target_link_libraries(${name} PUBLIC ${ARG_DEPENDS} PRIVATE ${ARG_PRIVATE_DEPENDS})
endfunction()
