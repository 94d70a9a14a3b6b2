include(GenerateExportHeader)

# zv_watch_sources(TARGET <source>...)
#
# The generated step that runs moc and uic looks at the sources it knew when it ran last. Where the
# list has changed in a folder that was built before, it has to run again, or a new class would be
# compiled without its meta-object and its form.
function(zv_watch_sources target)
    if(NOT "${ARGN}" STREQUAL "${ZV_SOURCES_OF_${target}}")
        file(REMOVE "${CMAKE_CURRENT_BINARY_DIR}/${target}_autogen/timestamp")
        set(ZV_SOURCES_OF_${target} "${ARGN}" CACHE INTERNAL "")
    endif()
endfunction()

# zv_add_kit(NAME LINK <library>... KITS <kit>... HEADERS <precompiled header>...)
#
# One folder of src/ becomes one kit: every source in it is compiled once, as objects, and wrapped
# as the shared library NAME that shows only what its export macro marks. Tests link the objects.
function(zv_add_kit name)
    cmake_parse_arguments(KIT "" "" "LINK;KITS;HEADERS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS "*.cpp" "*.h" "forms/*.ui")

    add_library(${name}_objects OBJECT ${sources})
    zv_watch_sources(${name}_objects ${sources})
    set_target_properties(${name}_objects PROPERTIES
        AUTOMOC ON AUTOUIC ON
        AUTOUIC_SEARCH_PATHS "${CMAKE_CURRENT_SOURCE_DIR}/forms"
        ZV_KITS "${KIT_KITS}")
    string(TOLOWER ${name} lower)
    string(TOUPPER ${name} upper)
    generate_export_header(${name}_objects BASE_NAME ${name}
        EXPORT_MACRO_NAME "${upper}_EXPORT"
        EXPORT_FILE_NAME "${CMAKE_BINARY_DIR}/include/${name}/${lower}_export.h")
    target_compile_definitions(${name}_objects PRIVATE ${name}_objects_EXPORTS)
    target_include_directories(${name}_objects PUBLIC
        "${PROJECT_SOURCE_DIR}/src" "${CMAKE_BINARY_DIR}/include")
    target_link_libraries(${name}_objects PUBLIC ${KIT_LINK})
    if(KIT_HEADERS)
        target_precompile_headers(${name}_objects PRIVATE ${KIT_HEADERS})
    endif()

    add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
    set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0 LINKER_LANGUAGE CXX)
    target_include_directories(${name} PUBLIC
        "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>" "$<BUILD_INTERFACE:${CMAKE_BINARY_DIR}/include>")
    target_link_libraries(${name} PUBLIC ${KIT_LINK} ${KIT_KITS})
endfunction()

# Sets OUT to the object libraries of the kits named and of all kits below them.
function(zv_kit_objects out)
    set(pending ${ARGN})
    set(found)
    while(pending)
        list(POP_FRONT pending kit)
        if(NOT ${kit}_objects IN_LIST found)
            list(APPEND found ${kit}_objects)
            get_target_property(below ${kit}_objects ZV_KITS)
            if(below)
                list(APPEND pending ${below})
            endif()
        endif()
    endwhile()
    set(${out} ${found} PARENT_SCOPE)
endfunction()

# zv_add_qt_tests(NAME KITS <kit>... [LINK <library>...] [EXTRA <source>...])
#
# Every test_<subject>.cpp of the folder holds one QtTest class. They share one binary, and CTest
# starts each class as a process of its own, since the kits' singletons cannot be reset.
function(zv_add_qt_tests name)
    cmake_parse_arguments(TEST "" "" "KITS;LINK;EXTRA" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS "*.cpp" "*.h")
    add_executable(${name} ${sources} ${TEST_EXTRA})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    zv_watch_sources(${name} ${sources})
    zv_kit_objects(objects ${TEST_KITS})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/src" "${CMAKE_BINARY_DIR}/include"
        "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${name} PRIVATE zv_test_support ${objects} ${TEST_LINK} Qt5::Test)
    target_precompile_headers(${name} PRIVATE <QtCore/QtCore> <QtTest/QtTest>)
    file(GLOB tests CONFIGURE_DEPENDS "test_*.cpp")
    foreach(test IN LISTS tests)
        get_filename_component(stem ${test} NAME_WE)
        string(REPLACE "test_" "" subject ${stem})
        add_test(NAME ${name}.${subject} COMMAND ${name} ${subject})
        set_tests_properties(${name}.${subject} PROPERTIES
            TIMEOUT 300 ENVIRONMENT "${ZV_TEST_ENVIRONMENT}")
    endforeach()
endfunction()
