# Sets warnings, hardening and sanitizers for every target.
add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow)

if(FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
else()
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE
    "$<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>")
endif()

add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
