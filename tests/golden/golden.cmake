# Golden results of parsing and activation: golden_dump prints them, golden_tests compares
# them with the committed text. cross_check.sh includes this file into an earlier tree too.
add_library(golden_corpus STATIC
    ${CMAKE_CURRENT_LIST_DIR}/GoldenActivation.cpp
    ${CMAKE_CURRENT_LIST_DIR}/GoldenCorpus.cpp
    ${CMAKE_CURRENT_LIST_DIR}/GoldenPrinter.cpp
    ${CMAKE_CURRENT_LIST_DIR}/XmlAitInput.cpp)
target_include_directories(golden_corpus PUBLIC ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(golden_corpus PUBLIC tesmo_hbbtv_static fake_world shared_data)
target_compile_definitions(golden_corpus PRIVATE GOLDEN_FUZZ_CORPUS="${PROJECT_SOURCE_DIR}/fuzz/corpus")
if(TARGET capture_reader)
    target_link_libraries(golden_corpus PUBLIC capture_reader)
    target_compile_definitions(golden_corpus PRIVATE GOLDEN_HAS_CAPTURE_READER)
endif()

add_executable(golden_dump ${CMAKE_CURRENT_LIST_DIR}/golden_dump.cpp)
target_link_libraries(golden_dump PRIVATE golden_corpus)
