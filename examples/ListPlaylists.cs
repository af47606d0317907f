// Lists the playlists of a music database file with their tracks.
//
//   mcs ListPlaylists.cs && LD_LIBRARY_PATH=/where/it/is mono ListPlaylists.exe DATABASE    # Linux
//   csc /platform:x86 ListPlaylists.cs                                                    # Windows
//
// Needs no device. A database that is damaged gives what is whole of it, and a word about that.
using System;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

// What this host needs of quaylink-collection. Every struct has all the fields of the header's first
// version, and tells the library how large it is: fields that later versions add need not be here.
static class Collection {
  [StructLayout(LayoutKind.Sequential)]
  public struct Error {
    public uint StructSize;
    public int Code;
    public ulong Offset;
    [MarshalAs(UnmanagedType.ByValArray, SizeConst = 240)]
    public byte[] Message;
  }

  [StructLayout(LayoutKind.Sequential)]
  public struct Info {
    public uint StructSize, TrackCount, PlaylistCount, Compressed, PlayCounts, Damaged;
    public ulong DamageOffset;
    public IntPtr Damage;
  }

  [StructLayout(LayoutKind.Sequential)]
  public struct Track {
    public uint StructSize, Id;
    public ulong PersistentId;
    public IntPtr Location, Title, Artist, Album, AlbumArtist, Genre, Composer, Comment, Grouping;
    public IntPtr Description, Category, Subtitle, FileType, SortTitle, SortArtist, SortAlbum;
    public IntPtr SortAlbumArtist, SortComposer, SortShow, Show, Episode, Network;
    public IntPtr PodcastUrl, PodcastFeed;
    public uint TrackNumber, TrackCount, DiscNumber, DiscCount, Year, LengthMs, FileSize, BitRate;
    public uint SampleRate, BeatsPerMinute, Rating, PlayCount, SkipCount, Compilation, Checked;
    public uint MediaType, SeasonNumber, EpisodeNumber, BookmarkMs;
    public uint Added, Modified, LastPlayed, LastSkipped, Released;
  }

  [StructLayout(LayoutKind.Sequential)]
  public struct Playlist {
    public uint StructSize, Kind;
    public ulong PersistentId;
    public IntPtr Name, Tracks;
    public uint TrackCount, Reserved;
  }

  [DllImport("quaylink-collection", CallingConvention = CallingConvention.Cdecl)]
  public static extern int QuaylinkOpenFile(byte[] path, IntPtr options, out IntPtr collection,
                                            ref Error error);

  [DllImport("quaylink-collection", CallingConvention = CallingConvention.Cdecl)]
  public static extern void QuaylinkClose(IntPtr collection);

  [DllImport("quaylink-collection", CallingConvention = CallingConvention.Cdecl)]
  public static extern int QuaylinkGetInfo(IntPtr collection, ref Info info);

  [DllImport("quaylink-collection", CallingConvention = CallingConvention.Cdecl)]
  public static extern int QuaylinkGetTrack(IntPtr collection, uint index, ref Track track);

  [DllImport("quaylink-collection", CallingConvention = CallingConvention.Cdecl)]
  public static extern int QuaylinkGetPlaylist(IntPtr collection, uint index, ref Playlist playlist);

  // Every string is UTF-8, on every system.
  public static string Text(IntPtr text) {
    int length = 0;
    while (Marshal.ReadByte(text, length) != 0) ++length;
    var bytes = new byte[length];
    Marshal.Copy(text, bytes, 0, length);
    return Encoding.UTF8.GetString(bytes);
  }

  public static uint SizeOf<T>() { return (uint)Marshal.SizeOf(typeof(T)); }
}

static class ListPlaylists {
  static readonly string[] Kinds = {"playlist", "everything", "smart", "podcasts"};

  static string KindOf(Collection.Playlist playlist) {
    return Kinds[playlist.Kind < Kinds.Length ? playlist.Kind : 0];
  }

  static void Print(IntPtr collection, TextWriter output) {
    var playlist = new Collection.Playlist { StructSize = Collection.SizeOf<Collection.Playlist>() };
    var track = new Collection.Track { StructSize = Collection.SizeOf<Collection.Track>() };
    for (uint i = 0; Collection.QuaylinkGetPlaylist(collection, i, ref playlist) == 0; ++i) {
      output.WriteLine("{0} ({1}, {2})", Collection.Text(playlist.Name), KindOf(playlist),
                       playlist.TrackCount);
      for (int j = 0; j < playlist.TrackCount; ++j) {
        uint index = (uint)Marshal.ReadInt32(playlist.Tracks, 4 * j);
        if (Collection.QuaylinkGetTrack(collection, index, ref track) != 0) continue;
        output.WriteLine("  {0} - {1}", Collection.Text(track.Artist), Collection.Text(track.Title));
      }
    }
  }

  static int Main(string[] arguments) {
    if (arguments.Length != 1) {
      Console.Error.WriteLine("usage: ListPlaylists DATABASE");
      return 2;
    }
    string database = arguments[0];
    var error = new Collection.Error { StructSize = Collection.SizeOf<Collection.Error>() };
    IntPtr collection;
    if (Collection.QuaylinkOpenFile(Encoding.UTF8.GetBytes(database + "\0"), IntPtr.Zero,
                                    out collection, ref error) != 0) {
      string message = Encoding.UTF8.GetString(error.Message).TrimEnd('\0');
      Console.Error.WriteLine("{0}: {1}", database, message);
      return 1;
    }
    try {
      using (var output = new StreamWriter(Console.OpenStandardOutput(), new UTF8Encoding(false))) {
        Print(collection, output);
      }
      var info = new Collection.Info { StructSize = Collection.SizeOf<Collection.Info>() };
      Collection.QuaylinkGetInfo(collection, ref info);
      if (info.Damaged == 0) return 0;
      Console.Error.WriteLine("{0}: {1}", database, Collection.Text(info.Damage));
      return 1;
    } finally {
      Collection.QuaylinkClose(collection);
    }
  }
}
