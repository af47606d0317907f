# Completion of the quaylink command for PowerShell. To have it in every session, add to the file that $PROFILE names:
#
#   . C:\Quaylink\completion\quaylink.ps1
#
# PowerShell runs no scripts until it is told to, and none that came from the network; type once:
#
#   Set-ExecutionPolicy -Scope CurrentUser RemoteSigned
#   Unblock-File C:\Quaylink\completion\quaylink.ps1
Register-ArgumentCompleter -Native -CommandName quaylink, quaylink.exe -ScriptBlock {
    param($word, $commandLine, $position)

    $everywhere = '--help --quiet --verbose'
    $filters = '--artist --album --genre --match --year --playlist --kind'
    $options = @{
        'status' = '--json'
        'tracks' = "--from --json --csv --columns --sort --reverse $filters"
        'playlists' = '--from --json'
        'export' = "--name --from --dry-run --verify --rescue --no-playlists --json $filters"
        'copy-track' = ''
        'copy-database' = ''
        'files' = '--json'
        'pull' = '--dry-run --json'
    }
    $kinds = 'audio video podcast audiobook music-video television'
    $properties = 'index id persistentId location title artist album albumArtist genre composer comment grouping',
        'description fileType sortTitle sortArtist sortAlbum podcastUrl podcastFeed trackNumber trackCount discNumber',
        'discCount year lengthMs size bitRate sampleRate bpm rating playCount skipCount compilation checked mediaType',
        'seasonNumber episodeNumber bookmarkMs added modified lastPlayed lastSkipped released' -join ' '

    # The words before the one that is being completed.
    $before = @($commandLine.CommandElements | Select-Object -Skip 1 |
        Where-Object { $_.Extent.EndOffset -lt $position } | ForEach-Object { $_.ToString() })
    $command = $before | Where-Object { $options.ContainsKey($_) } | Select-Object -First 1
    $offered = switch -CaseSensitive ($before | Select-Object -Last 1) {
        '--kind' { $kinds }
        '--sort' { $properties }
        '--columns' { $properties }
        default {
            if ($word -like '-*') {
                if ($command) { "$everywhere $($options[$command])" } else { "$everywhere --version" }
            } elseif (-not $command) {
                $options.Keys -join ' '
            }
        }
    }
    # Where nothing is offered, PowerShell itself offers files.
    -split $offered | Where-Object { $_ -clike "$word*" } | Sort-Object | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)
    }
}
