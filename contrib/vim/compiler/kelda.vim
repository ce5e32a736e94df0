" Vim compiler file
" Compiler: kelda check
"
" :compiler kelda, then :make. Folders other than the default ones stand in g:kelda_device, or
" behind :make:
"   let g:kelda_device = '--preinit preinit --profiles profiles'

if exists('current_compiler')
  finish
endif
let current_compiler = 'kelda'

let s:cpo = &cpo
set cpo&vim

if exists(':CompilerSet') != 2
  command -nargs=* CompilerSet setlocal <args>
endif

let s:device = get(g:, 'kelda_device', '')
execute 'CompilerSet makeprg=' . escape('kelda check --format concise ' . s:device . ' $*', ' \|"')

" FILE:LINE:COLUMN: SEVERITY: MESSAGE [RULE]; less of the place where there is less, and "kelda"
" where no file is at fault.
CompilerSet errorformat=
      \kelda:\ %trror:\ %m,
      \kelda:\ %tarning:\ %m,
      \kelda:\ %tote:\ %m,
      \%f:%l:%c:\ %trror:\ %m,
      \%f:%l:%c:\ %tarning:\ %m,
      \%f:%l:%c:\ %tote:\ %m,
      \%f:%l:\ %trror:\ %m,
      \%f:%l:\ %tarning:\ %m,
      \%f:%l:\ %tote:\ %m,
      \%f:\ %trror:\ %m,
      \%f:\ %tarning:\ %m,
      \%f:\ %tote:\ %m

let &cpo = s:cpo
unlet s:cpo s:device
