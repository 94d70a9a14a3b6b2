# zv_add_pictures(TARGET <file.qrc>...)
#
# A .qrc of resources/ names files as the program sees them. Each PNG in it is rendered from the
# drawing of the same path in art/, or from the one that art/variants.txt gives for it, once at
# scale 1 and once, as NAME@2x.png, at scale 2. Everything else is taken from resources/ as it is.
# Drawings are sources and PNGs are products: they live in the build tree alone.
function(zv_add_pictures target)
    find_program(ZV_RSVG_CONVERT rsvg-convert)
    if(NOT ZV_RSVG_CONVERT)
        message(FATAL_ERROR "rsvg-convert renders the pictures and is missing: install librsvg2-bin")
    endif()
    # Drawings hold their words as text, in one font. Without it they are drawn in another, or not.
    find_program(ZV_FC_LIST fc-list)
    if(ZV_FC_LIST)
        execute_process(COMMAND "${ZV_FC_LIST}" "Noto Sans CJK SC" OUTPUT_VARIABLE font)
        if(font STREQUAL "")
            message(WARNING "the words in the pictures are set in Noto Sans CJK SC, which is missing: "
                "install fonts-noto-cjk")
        endif()
    endif()
    set(art "${PROJECT_SOURCE_DIR}/art")
    set(from "${CMAKE_CURRENT_SOURCE_DIR}/resources")
    set(to "${CMAKE_CURRENT_BINARY_DIR}/resources")

    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${art}/variants.txt")
    file(STRINGS "${art}/variants.txt" variants REGEX "^[^#]")
    foreach(variant IN LISTS variants)
        separate_arguments(words UNIX_COMMAND "${variant}")
        list(GET words 0 picture)
        list(GET words 1 drawing)
        list(GET words 2 look)
        set("drawing_of_${picture}" "${art}/${drawing}")
        set("look_of_${picture}" "${art}/looks/${look}")
    endforeach()

    set(doubled "<RCC>\n<qresource prefix=\"/\">\n")
    set(doubled_files)
    foreach(qrc IN LISTS ARGN)
        get_filename_component(name "${qrc}" NAME_WE)
        configure_file("${from}/${qrc}" "${to}/${qrc}" COPYONLY)
        file(STRINGS "${from}/${qrc}" entries REGEX "<file>")
        set(files)
        foreach(entry IN LISTS entries)
            string(REGEX REPLACE ".*<file>(.*)</file>.*" "\\1" path "${entry}")
            list(APPEND files "${to}/${path}")
            if(NOT path MATCHES "\\.png$")
                configure_file("${from}/${path}" "${to}/${path}" COPYONLY)
                continue()
            endif()
            string(REGEX REPLACE "\\.png$" "" stem "${path}")
            set(drawing "${art}/${stem}.svg")
            set(look)
            set(look_file)
            if(DEFINED "drawing_of_${path}")
                set(drawing "${drawing_of_${path}}")
                set(look_file "${look_of_${path}}")
                set(look "--stylesheet=${look_file}")
            endif()
            get_filename_component(folder "${to}/${path}" DIRECTORY)
            file(MAKE_DIRECTORY "${folder}")
            add_custom_command(
                OUTPUT "${to}/${path}" "${to}/${stem}@2x.png"
                COMMAND "${ZV_RSVG_CONVERT}" ${look} -o "${to}/${path}" "${drawing}"
                COMMAND "${ZV_RSVG_CONVERT}" ${look} --zoom=2 -o "${to}/${stem}@2x.png" "${drawing}"
                DEPENDS "${drawing}" ${look_file}
                COMMENT "Drawing ${path}" VERBATIM)
            string(APPEND doubled "<file>${stem}@2x.png</file>\n")
            list(APPEND doubled_files "${to}/${stem}@2x.png")
        endforeach()
        zv_add_rcc("${target}" "${name}" "${to}/${qrc}" ${files})
    endforeach()
    string(APPEND doubled "</qresource>\n</RCC>\n")
    file(CONFIGURE OUTPUT "${to}/doubled.qrc" CONTENT "${doubled}" @ONLY ESCAPE_QUOTES)
    zv_add_rcc("${target}" doubled "${to}/doubled.qrc" ${doubled_files})
endfunction()

function(zv_add_rcc target name qrc)
    set(source "${CMAKE_CURRENT_BINARY_DIR}/qrc_${name}.cpp")
    add_custom_command(OUTPUT "${source}"
        COMMAND Qt5::rcc --name ${name} --output "${source}" "${qrc}"
        DEPENDS "${qrc}" ${ARGN}
        COMMENT "Packing ${name}.qrc" VERBATIM)
    set_source_files_properties("${source}" PROPERTIES
        SKIP_AUTOGEN ON SKIP_PRECOMPILE_HEADERS ON GENERATED ON)
    target_sources(${target} PRIVATE "${source}")
endfunction()
